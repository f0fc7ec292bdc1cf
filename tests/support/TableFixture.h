#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "TesselVxlan/nexthop/NextHopTableProgrammer.h"
#include "TesselVxlan/nexthop/OverlayTableProgrammerBase.h"
#include "TesselVxlan/nexthop/UnderlayEcmpProgrammer.h"
#include "TesselVxlan/nexthop/VirtualPortTableProgrammer.h"
#include "TesselVxlan/nexthop/VxlanL3Oif1TableProgrammer.h"
#include "platform/asic/SimulatedChip.h"
#include "platform/kiln/Log.h"
#include "platform/vane/HwTunnel.h"

/// The next-hop tables of an agent on a simulated chip, with their programmers and the records that these share.
namespace TableTest {

using Handle = Asic::EntryHandle::PtrConst;

// One small number yields every name of a test.
Meshal::IpGenAddr vtep(unsigned n);   ///< 10.0.0.n
Meshal::IpGenAddr vtep6(unsigned n);  ///< 2001:db8::n
Meshal::EthAddr mac(unsigned n);      ///< 02:00:00:00:00:n
Vane::TunnelKey tunnel(Meshal::IpGenAddr const& vtep, std::uint64_t genId = 1);
/// A resolved one: MAC n, port "Ethernet<n>", interface "Vlan<n>". Ports 1 to 8 are single ports, 9 is group 9.
Vane::NextHopEntry nextHop(unsigned n);
Dovel::Ptr<Vane::HwTunnelConfigEntry const> config(Vane::TunnelKey const& key, std::uint32_t adjId,
                                                   Vane::NextHopEntrySet const& nextHops);

/// For the names of tests over both ways.
std::string completionName(testing::TestParamInfo<Asic::Completion> const& way);

/// What a test wants of its chip.
struct ChipSpec {
  Asic::Completion completion = Asic::Completion::direct;
  bool cascaded = false;
  bool her = true;
  bool ecmp = true;
  bool ownReservedRow = false;
  bool floods = false;  ///< Next hops without a port flood their VLAN.
  bool defaultSvp = true;
  bool capabilities = true;
  std::uint16_t vpClassCode = 3;
  std::map<std::string, std::uint32_t> rows = {};  ///< Sizes that differ, by chip table.
};

/// A simulated chip and what a test asks of its tables. An operator message that a test does not take away fails it.
class ChipWorld {
 public:
  ChipWorld(Dovel::Ptr<Asic::ChipProfile const> const& profile, Asic::Completion completion);
  ~ChipWorld();
  ChipWorld(ChipWorld const&) = delete;
  ChipWorld& operator=(ChipWorld const&) = delete;

  Asic::Chip& chip() const { return *chip_; }
  Asic::SimulatedChip& hardware() const { return static_cast<Asic::SimulatedChip&>(chip_->driver()); }
  TesselCentral::ChipInfo const& chipInfo() const { return chipInfo_; }
  /// Delivers what the chip has answered, and what that brings about.
  void settle();
  /// Rows written since the last call.
  std::uint64_t writes();
  /// The messages raised since the last call, a line each.
  std::string messages();
  /// The entries of a table whose keys begin so, a line each: "key row N: name=value …". Fields that are 0 are left
  /// out.
  std::string show(std::string_view table, std::string_view keys = {}) const;
  /// The names of the keys alone.
  std::string keys(std::string_view table) const;

 private:
  Kiln::LogCapture log_;
  Dovel::Ptr<Asic::Chip> chip_;
  TesselCentral::ChipInfo chipInfo_;
  std::uint64_t writesSeen_ = 0;

 protected:
  Dovel::Ptr<Stateway::EntityManager> em_;
};

/// A chip with every table of the chain in service.
class TableWorld : public ChipWorld {
 public:
  explicit TableWorld(ChipSpec const& chipAsked);
  ~TableWorld();

  Kiln::Dir& dir() { return *dir_; }

  /// A VTEP with a tunnel of that type, as the tunnel programmers keep it.
  TesselCentral::VtepIpToTnlIdNhIdMap& vtepIs(Meshal::IpGenAddr const& vtep,
                                              Vane::TunnelType type = Vane::vxlanTunnel_);
  /// "tnl done 2, nh done 3": what is published of a VTEP.
  std::string published(Meshal::IpGenAddr const& vtep) const;

  /// A virtual port for `vtep`, as the tunnel programmers make it before the overlay row.
  Handle virtualPort(Meshal::IpGenAddr const& vtep);

  Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> fcsd;
  Dovel::Ptr<TesselCentral::VxlanToL2State> l2State;
  Dovel::Ptr<TesselVxlan::TunnelNextHopUpdateConfig> doorbell;
  Dovel::Ptr<VaneL3Intf::Table> l3Intfs;
  Dovel::Ptr<TesselMcast::IpmcTable> ipmc;
  Dovel::Ptr<TesselL3Common::VxlanDvpToVtepMap> dvpMap;
  Dovel::Ptr<TesselL3Common::VxlanTunnelIndexToVtepMap> tunnelIndexMap;

  Dovel::Ptr<TesselVxlan::NextHopTableProgrammer> nextHops;
  Dovel::Ptr<TesselVxlan::UnderlayEcmpProgrammer> ecmp;
  Dovel::Ptr<TesselVxlan::VxlanL3Oif1TableProgrammer> oif1;
  Dovel::Ptr<TesselVxlan::VirtualPortProgrammer> virtualPorts;
  Dovel::Ptr<TesselVxlan::OverlayTableProgrammer> overlay;

 private:
  void recordsIs(ChipSpec const& chipAsked);
  void programmersIs(ChipSpec const& chipAsked);

  Dovel::Ptr<Kiln::Dir> dir_;
  Dovel::Ptr<TesselCentral::VxlanCapabilities> capabilities_;
  Dovel::Ptr<TesselL3Tunnel::L3TunnelEgrL3OifHelper> oif2_;
};

}  // namespace TableTest
