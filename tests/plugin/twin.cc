// A plug-in with a class of the name of one in PluginTest.cpp.

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Entity.h"

namespace PluginTest {

class Mounter final : public Kiln::NamedEntity {
  KILN_TYPE(PluginTest::Mounter, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
};
KILN_DESCRIBE(Mounter)

}  // namespace PluginTest
