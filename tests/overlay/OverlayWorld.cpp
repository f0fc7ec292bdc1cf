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

/// " name=value", without fields that are 0 or empty.
class FieldText final : public Asic::FieldVisitor {
 public:
  explicit FieldText(std::string& out) : out_(out) {}
  void number(std::string_view name, std::uint64_t value) override {
    if (value != 0) add(name, std::to_string(value));
  }
  void text(std::string_view name, std::string value) override {
    if (!value.empty()) add(name, value);
  }
  void handle(std::string_view name, Handle const& target) override {
    if (target) add(name, target->keyText());
  }
  void groupBegin(std::string_view) override {}
  void groupEnd() override {}

 private:
  void add(std::string_view name, std::string const& value) { out_.append(" ").append(name).append("=").append(value); }
  std::string& out_;
};

}  // namespace

Meshal::IpGenAddr ip(std::string_view text) { return Meshal::IpGenAddr(text); }

TesselL3Common::VxlanTunnelKey header(std::string_view source, bool srcPortValid, std::uint16_t srcPort) {
  return {Meshal::IntfId("Vxlan1"), ip(source), 4789, srcPortValid, srcPort, 64};
}

OverlayWorld::OverlayWorld(ChipSpec const& chipAsked)
    : chipAsked_(chipAsked),
      chip_(Asic::makeSimulatedChip(makeProfile(chipAsked), chipAsked.completion)),
      chipInfo_(TesselCentral::LogicalModInfo(Asic::ChipInfo(chip_))),
      em_(Dovel::make<Stateway::EntityManager>()),
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
  Asic::bringUp(*virtualPorts, em_, chipInfo_);
  programmersIs();
}

OverlayWorld::~OverlayWorld() {
  EXPECT_EQ(messages(), "");
  chip_->stop();
  term = nullptr;
  headers = nullptr;
  virtualPorts = nullptr;
  fcsd = nullptr;
  trust = nullptr;
  config = nullptr;
  vtis = nullptr;
  capabilities = nullptr;
  central = nullptr;
  state = nullptr;
  slice = nullptr;
  em_ = nullptr;
  chipInfo_ = {};
  chip_ = nullptr;
  EXPECT_EQ(Dovel::Node::aliveCount(), aliveBefore_);
}

void OverlayWorld::programmersIs() {
  term = TesselVxlan::tesselVxlanTunnelTermTableProgrammerFactory(em_, fcsd, config);
  term->initAllowedPortsProfileTable(chipInfo_);
  term->initSipTable(chipInfo_);
  term->initDipTable(chipInfo_);
  if (chipAsked_.ipv6Ends) {
    term->initSipV6Table(chipInfo_);
    term->initDipV6Table(chipInfo_);
  }
  headers = TesselVxlan::tesselVxlanEgrL3TunnelTablesProgrammerFactory(em_, fcsd, trust, config);
  headers->initTables(chipInfo_);
  settle();
  writes();
}

Dovel::Ptr<TesselVxlan::TesselVxlanVtiStatusSm> OverlayWorld::vtiSmIs() {
  return TesselVxlan::tesselVxlanVtiStatusSmFactory("vxlanVtiStatusSm", vtis, nullptr, em_, fcsd, capabilities,
                                                    TesselL3Common::tesselVxlanConfigFactory("vxlanConfig"), term,
                                                    headers, central, state, slice, config, chipAsked_.supportsVxlan);
}

Vxlan::VtiStatus& OverlayWorld::vti(std::string_view name) { return *vtis->vtiStatusIs(Meshal::IntfId(name)); }

void OverlayWorld::settle() {
  while (chip_->deliver() != 0) {
  }
}

std::uint64_t OverlayWorld::writes() { return chip_->writes() - std::exchange(writesSeen_, chip_->writes()); }

std::string OverlayWorld::messages() {
  settle();
  std::string text;
  for (auto const& record : log_.records()) text += record.name + ": " + record.text + "\n";
  log_.clear();
  return text;
}

std::string OverlayWorld::show(std::string_view table) const {
  std::string text;
  chip_->store(table)->forEachEntry([&](Asic::EntryView const& entry) {
    text += entry.key() + (entry.row() ? " @" + Kiln::toText(*entry.row()) : " waits");
    FieldText fields(text);
    entry.fields(fields);
    text += "\n";
  });
  return text;
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
    if (!chip_->store(table)) continue;
    chip_->store(table)->forEachEntry([&](Asic::EntryView const& entry) {
      Phb phb;
      entry.fields(phb);
      text += (text.empty() ? "" : " ") + entry.key() + (phb.on ? "+" : "");
    });
  }
  return text;
}

Handle OverlayWorld::virtualPortIs(Meshal::IpGenAddr const& vtep) { return virtualPorts->entryCommit(vtep, {}); }

}  // namespace OverlayTest
