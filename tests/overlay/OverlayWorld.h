#pragma once

#include <map>
#include <string>

#include "TesselVxlan/overlay/TesselVxlanVtiStatusSm.h"
#include "platform/tessel/tables/VirtualPortTableMerged.h"
#include "tests/support/TableFixture.h"

/// The tables of tunnel ends and outer headers on a simulated chip, with the records that decide on them.
namespace OverlayTest {

using Handle = Asic::EntryHandle::PtrConst;

struct ChipSpec {
  Asic::Completion completion = Asic::Completion::direct;
  bool ipv4DipInKey = true;
  bool ipv6DipUpper64Only = false;
  bool ipv6Ends = true;  ///< The chip has the IPv6 tables of tunnel ends.
  bool supportsVxlan = true;
  std::map<std::string, std::uint32_t> rows = {};  ///< Sizes that differ, by table.
};

Meshal::IpGenAddr ip(std::string_view text);
/// An outer header from `source`, UDP port 4789.
TesselL3Common::VxlanTunnelKey header(std::string_view source, bool srcPortValid = false, std::uint16_t srcPort = 0);

/// Fails the test if an object is alive that was not when it was made.
struct LeavesNoObject {
  std::size_t const before = Dovel::Node::aliveCount();
  ~LeavesNoObject() { EXPECT_EQ(Dovel::Node::aliveCount(), before); }
};

/// Their tables on a chip of its own; an object that stays alive fails the test.
class OverlayWorld : LeavesNoObject, public TableTest::ChipWorld {
 public:
  explicit OverlayWorld(ChipSpec const& chipAsked);
  ~OverlayWorld();

  /// The messages raised since the last call, delivered first: a line each.
  std::string messages();
  /// The addresses at which tunnels end, in the order of their texts, separated by spaces; one with its PHB setting on
  /// has a '+' behind it.
  std::string ends() const;
  /// A virtual port for `vtep`.
  Handle virtualPortIs(Meshal::IpGenAddr const& vtep);

  /// The programmers as after a start: tables made and empty.
  void programmersIs();
  /// The state machine of the VXLAN interfaces.
  Dovel::Ptr<TesselVxlan::TesselVxlanVtiStatusSm> vtiSmIs();
  /// The interface of that name, made if it isn't there.
  Vxlan::VtiStatus& vti(std::string_view name = "Vxlan1");

 private:
  ChipSpec chipAsked_;

 public:
  Dovel::Ptr<TesselCentral::FeatureAgentCommonSmData> fcsd;
  Dovel::Ptr<TesselCommon::Qos::TrustStatus> trust;
  Dovel::Ptr<Vxlan::VxlanConfigDir> config;
  Dovel::Ptr<Vxlan::VtiStatusDir> vtis;
  Dovel::Ptr<TesselCentral::VxlanCapabilities> capabilities;
  Dovel::Ptr<TesselCentral::VxlanState> central;
  Dovel::Ptr<TesselL3Common::TesselVxlanState> state;
  Dovel::Ptr<TesselCentral::VxlanSliceConfig> slice;
  Dovel::Ptr<TesselL3Common::VirtualPortTableMerged> virtualPorts;
  Dovel::Ptr<TesselVxlan::TesselVxlanTunnelTermTableProgrammer> term;
  Dovel::Ptr<TesselVxlan::TesselVxlanEgrL3TunnelTablesProgrammer> headers;
};

}  // namespace OverlayTest
