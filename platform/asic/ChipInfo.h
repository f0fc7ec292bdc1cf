#pragma once

#include "platform/asic/Chip.h"

namespace Asic {

/// At which point of the agent's start a table is brought up. The numbers are the host's; here they are kept.
struct BringupStage : Kiln::StrongId<BringupStage> {
  using StrongId::StrongId;
};

/// Identity of a chip: what the tables of an agent are brought up on. Plain value; the default names none.
class ChipInfo {
 public:
  ChipInfo() = default;
  explicit ChipInfo(Dovel::Ptr<Chip> chip) : chip_(std::move(chip)) {}

  /// Null for the default.
  Dovel::Ptr<Chip> const& chip() const { return chip_; }
  /// Whether the chip is one of those that the feature's own tests run on.
  bool isTestChip() const;

  BringupStage stage() const { return stage_; }
  void stageIs(BringupStage stage) { stage_ = stage; }

  friend bool operator==(ChipInfo const&, ChipInfo const&) = default;

 private:
  Dovel::Ptr<Chip> chip_;
  BringupStage stage_;
};
inline void appendText(std::string& out, ChipInfo const& info) {
  if (info.chip()) out += info.chip()->profile()->name();
}

}  // namespace Asic
