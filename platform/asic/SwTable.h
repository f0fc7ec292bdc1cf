#pragma once

#include "platform/asic/ChipInfo.h"
#include "platform/asic/Entry.h"
#include "platform/asic/Store.h"
#include "platform/asic/TableRegistry.h"
#include "platform/kiln/Entity.h"

namespace Stateway {
class EntityManager;
}  // namespace Stateway

namespace Asic {

/// Base of all tables: the names of the table library.
class SwTableBase : public Kiln::NamedEntity {
  KILN_TYPE(Asic::SwTableBase, Kiln::NamedEntity)

 public:
  using NamedEntity::NamedEntity;
  using Index = Asic::Index;
  using EntryState = Asic::EntryState;
  using EntryHandle = Asic::EntryHandle;
};

/// A software table: one of the objects of a table class, bound to the one store of class and unit on a chip.
///
/// Reads and writes go to the store: all objects of the class see the same entries. Before `doInit` only the names may
/// be read.
/// Main thread only.
class SwTable : public SwTableBase {
  KILN_TYPE(Asic::SwTable, Asic::SwTableBase)

 public:
  using SwTableBase::SwTableBase;
  ~SwTable() override;

  /// Binds the table to the state database and to the chip. REQUIRES: `chipInfo` names a chip.
  void doInit(UnitId unit, Dovel::Ptr<Stateway::EntityManager> const& statewayEm, ChipInfo const& chipInfo);
  /// Marks the table as in service. REQUIRES: `doInit`.
  void doPublishHwTableMountInfo();
  /// The tables are in this process: nothing has to be mounted for them.
  template <class MountGroup>
  static void doMountHwTableMountInfo(MountGroup&&) {}

  /// The rows of the table in the profile. REQUIRES: `doInit`.
  std::uint32_t numEntries() const;
  /// Null before `doInit`.
  Dovel::Ptr<StoreBase> const& store() const { return store_; }
  bool initialized() const { return store_ != nullptr; }

 protected:
  /// The store of this class; null for a part.
  virtual Dovel::Ptr<StoreBase> bind(Chip& chip, UnitId unit) = 0;
  /// Runs at the end of `doInit`, for a table that creates objects for its parts.
  virtual void bound() {}

 private:
  Dovel::Ptr<StoreBase> store_;
};

/// Binds, publishes and empties a table: the bring-up that all programmers share.
template <class Table>
void bringUp(Table& table, Dovel::Ptr<Stateway::EntityManager> const& statewayEm, ChipInfo const& chipInfo,
             UnitId unit = kSharedUnit) {
  table.doInit(unit, statewayEm, chipInfo);
  table.doPublishHwTableMountInfo();
  if constexpr (requires { table.entryBlockRemoveAll(); }) {
    table.entryBlockRemoveAll();
  } else {
    table.entryRemoveAll();
  }
}

}  // namespace Asic

#include "platform/asic/TableFamilies.h"  // IWYU pragma: export
