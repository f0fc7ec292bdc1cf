#pragma once

#include <cstdint>

#include "platform/asic/SwTable.h"
#include "platform/kiln/Sm.h"

namespace Consumer {

/// State: how bright a lamp is wanted.
class Lamp final : public Kiln::NamedEntity {
  KILN_TYPE(Consumer::Lamp, Kiln::NamedEntity)
  KILN_ATTR(0x102, std::uint8_t, brightness)
  KILN_COLL(0x103, std::uint16_t, std::uint8_t, scene)

 public:
  using NamedEntity::NamedEntity;
};

struct LampEntry : Asic::EntryBase {
  std::uint8_t level = 0;
  ASIC_ENTRY(LampEntry, level)
};

/// The chip's table of lamps, by number.
class LampTable final : public Asic::CommittedTable<LampTable, std::uint16_t, LampEntry> {
  ASIC_TABLE(Consumer::LampTable)

 public:
  using CommittedTable::CommittedTable;
};

/// Keeps the row of lamp 1.
class LampSm final : public Kiln::Sm {
  void lampDispatch(Dovel::Change const& change);
  void handleBrightness();

  KILN_BASE_TYPE(Consumer::LampSm)
  KILN_FIXED(0x102, Dovel::Ptr<LampTable>, table)
  KILN_WATCHED(0x103, Lamp const, lamp, &KilnSelf::lampDispatch, &KilnSelf::handleBrightness)

 public:
  explicit LampSm(Dovel::Ptr<LampTable> table) : table_(std::move(table)) {}
};

}  // namespace Consumer
