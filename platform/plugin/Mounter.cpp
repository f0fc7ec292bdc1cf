#include "platform/plugin/Mounter.h"

namespace Plugin {

void Mounter::doStage(Dovel::String const&, Dovel::String const&) {}
void Mounter::handleStageInstance(Dovel::String const&) {}
void Mounter::handleStageProgressionComplete(Dovel::String const&, Dovel::String const&) {}

}  // namespace Plugin
