#include "OverlayWorld.h"

#include <gtest/gtest.h>

#include "platform/asic/Store.h"
#include "platform/tessel/features/TesselProfile.h"

namespace OverlayTest {

namespace {

Dovel::Ptr<Asic::ChipProfile const> makeProfile(ChipSpec const& chipAsked) {
  auto const profile = Dovel::make<Asic::ChipProfile>("test");
  std::map<std::string, std::uint32_t> rows{{"EgrL3Ipv4TunnelTable", 16},    {"EgrL3Ipv6TunnelTable", 16},
                                            {"L2TunnelIpv4DipTable", 16},    {"L2TunnelIpv4SipTable", 16},
                                            {"AllowedPortBitmapProfile", 4}, {"VirtualPort1Table", 64},
                                            {"VirtualPort2Table", 64}};
  if (chipAsked.ipv6Ends) rows.insert({{"L2TunnelIpv6DipTable", 16}, {"L2TunnelIpv6SipTable", 16}});
  for (auto const& [table, count] : chipAsked.rows) rows[table] = count;
  for (auto const& [table, count] : rows) profile->tableIs(table, {count, 0});

  auto const attributes = Dovel::make<TesselVxlan::EgrL3TunnelTableAttributes>();
  attributes->ipv4DipInKeyIs(chipAsked.ipv4DipInKey);
  attributes->ipv6DipUpper64OnlyIs(chipAsked.ipv6DipUpper64Only);
  attributes->defaultUdpDestPortIs(4000);
  attributes->defaultHdrSelectAIs(1);
  attributes->defaultHdrSelectBIs(2);
  attributes->tunnelHdrSelectAIs(3);
  attributes->tunnelHdrSelectBIs(4);
  profile->featureIs(attributes);
  return profile;
}

}  // namespace

Meshal::IpGenAddr ip(std::string_view text) { return Meshal::IpGenAddr(text); }

TesselL3Common::VxlanTunnelKey header(std::string_view source, bool srcPortValid, std::uint16_t srcPort) {
  return {Meshal::IntfId("Vxlan1"), ip(source), 4789, srcPortValid, srcPort, 64};
}

OverlayWorld::OverlayWorld(ChipSpec const& chipAsked)
    : ChipWorld(makeProfile(chipAsked), chipAsked.completion),
      chipAsked_(chipAsked),
      fcsd(Dovel::make<TesselCentral::FeatureAgentCommonSmData>()),
      trust(TesselCommon::Qos::trustStatusFactory("trust")),
      config(Dovel::make<Vxlan::VxlanConfigDir>()),
      vtis(Dovel::make<Vxlan::VtiStatusDir>()),
      capabilities(Dovel::make<TesselCentral::VxlanCapabilities>()),
      central(Dovel::make<TesselCentral::VxlanState>()),
      state(Dovel::make<TesselL3Common::TesselVxlanState>()),
      slice(Dovel::make<TesselCentral::VxlanSliceConfig>()) {
  fcsd->logicalModInfosIs(true);
  capabilities->underlayMcastSupportedIs(true);
  virtualPorts = Dovel::make<TesselL3Common::VirtualPortTableMerged>("virtualPortTable");
  Asic::bringUp(*virtualPorts, em_, chipInfo());
  programmersIs();
}

OverlayWorld::~OverlayWorld() {
  EXPECT_EQ(messages(), "");
  chip().stop();
}

void OverlayWorld::programmersIs() {
  term = TesselVxlan::tesselVxlanTunnelTermTableProgrammerFactory(em_, fcsd, config);
  term->initAllowedPortsProfileTable(chipInfo());
  term->initSipTable(chipInfo());
  term->initDipTable(chipInfo());
  if (chipAsked_.ipv6Ends) {
    term->initSipV6Table(chipInfo());
    term->initDipV6Table(chipInfo());
  }
  headers = TesselVxlan::tesselVxlanEgrL3TunnelTablesProgrammerFactory(em_, fcsd, trust, config);
  headers->initTables(chipInfo());
  settle();
  writes();
}

Dovel::Ptr<TesselVxlan::TesselVxlanVtiStatusSm> OverlayWorld::vtiSmIs() {
  return TesselVxlan::tesselVxlanVtiStatusSmFactory("vxlanVtiStatusSm", vtis, nullptr, em_, fcsd, capabilities,
                                                    TesselL3Common::tesselVxlanConfigFactory("vxlanConfig"), term,
                                                    headers, central, state, slice, config, chipAsked_.supportsVxlan);
}

Vxlan::VtiStatus& OverlayWorld::vti(std::string_view name) { return *vtis->vtiStatusIs(Meshal::IntfId(name)); }

std::string OverlayWorld::messages() {
  settle();
  return ChipWorld::messages();
}

std::string OverlayWorld::ends() const {
  struct Phb final : Asic::FieldVisitor {
    bool on = false;
    void number(std::string_view name, std::uint64_t value) override {
      on |= name == "useOuterHeaderPhb" && value != 0;
    }
    void text(std::string_view, std::string) override {}
    void handle(std::string_view, Handle const&) override {}
    void groupBegin(std::string_view) override {}
    void groupEnd() override {}
  };
  std::string text;
  for (auto const* table : {"L2TunnelIpv4DipTable", "L2TunnelIpv6DipTable"}) {
    if (!chip().store(table)) continue;
    chip().store(table)->forEachEntry([&](Asic::EntryView const& entry) {
      Phb phb;
      entry.fields(phb);
      text += (text.empty() ? "" : " ") + entry.key() + (phb.on ? "+" : "");
    });
  }
  return text;
}

Handle OverlayWorld::virtualPortIs(Meshal::IpGenAddr const& vtep) { return virtualPorts->entryCommit(vtep, {}); }

}  // namespace OverlayTest
