#pragma once

#include <cstdint>
#include <vector>

#include "platform/plugin/LibMounterBase.h"
#include "platform/stateway/MountGroup.h"

namespace TesselInfra {

/// The programming types for which one table was mounted. The numbers are the host's; here they are kept.
class ProgrammingTypeSet {
 public:
  void progTypeSetIs(std::uint32_t type);
  bool has(std::uint32_t type) const;
  std::vector<std::uint32_t> const& types() const { return types_; }

 private:
  std::vector<std::uint32_t> types_;
};

/// A mounter that mounts tables of the chip.
///
/// Keeps the list of its tables, in the order of mounting, for a host that recovers tables after a restart.
class MounterBase : public TesselLib::MounterBase {
  KILN_TYPE(TesselInfra::MounterBase, TesselLib::MounterBase)

 public:
  struct RecoveredTable {
    Kiln::Type const* type;
    ProgrammingTypeSet programmingTypes;
  };

  /// The chip has completed the mounts of `unit`. Does nothing here.
  virtual void doAsicMountsComplete(std::uint32_t unit, bool recovered, Dovel::Ptr<Stateway::EntityManager> const& em);

  /// Puts the tables of a type on the list, once.
  void swTableForRecoveryIs(Kiln::Type const& type) { tableIs(type); }
  std::vector<RecoveredTable> const& swTablesForRecovery() const { return swTables_; }

  /// Has each table add its mount information to `mountGroup`, and lists it, in the order of the arguments.
  template <std::uint32_t ProgrammingType, class... Tables>
  void doMountSwTables(Stateway::MountGroup& mountGroup) {
    (doMountSwTable<Tables>(ProgrammingType, mountGroup), ...);
  }

 private:
  template <class Table>
  void doMountSwTable(std::uint32_t programmingType, Stateway::MountGroup& mountGroup) {
    Table::doMountHwTableMountInfo(mountGroup);
    tableIs(Table::kilnType()).programmingTypes.progTypeSetIs(programmingType);
  }
  RecoveredTable& tableIs(Kiln::Type const& type);

  std::vector<RecoveredTable> swTables_;
};

}  // namespace TesselInfra
