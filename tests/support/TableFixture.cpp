#include "tests/support/TableFixture.h"

#include "TesselVxlan/nexthop/OverlayCascadedTableProgrammer.h"
#include "TesselVxlan/nexthop/OverlayNextHopTableProgrammer.h"
#include "platform/asic/Store.h"
#include "platform/local/EntityManager.h"
#include "platform/tessel/features/L3NextHopAttributes.h"

namespace TableTest {

using Asic::ChipProfile;
using Asic::StoreBase;

namespace {

Meshal::IntfId port(unsigned n) { return Meshal::IntfId("Ethernet" + std::to_string(n)); }
Meshal::IntfId vlanIntf(unsigned n) { return Meshal::IntfId("Vlan" + std::to_string(n)); }

Dovel::Ptr<ChipProfile const> makeProfile(ChipSpec const& chipAsked) {
  auto const profile = Dovel::make<ChipProfile>("test");
  std::map<std::string, std::uint32_t> rows{
      {"IngL3NextHop2Table", 64}, {"EgrL3NextHop2", 64},     {"EcmpGroup1Table", 16}, {"EgrL3Oif2", 64},
      {"VirtualPort1Table", 64},  {"VirtualPort2Table", 64}, {"IpmcTable", 16},       {"EgrL3Ipv4TunnelTable", 16}};
  if (chipAsked.cascaded) rows.insert({"IngL3EcmpMember0Table", 64});
  if (!chipAsked.cascaded) rows.insert({{"IngL3NextHop1", 64}, {"EgrL3NextHop1", 64}});
  if (chipAsked.her) rows.insert({"VxlanEgrL3Oif1Table", 2});
  if (chipAsked.ecmp) rows.insert({"EcmpMember1Table", 64});
  if (chipAsked.defaultSvp) rows.insert({"RL2TunnelDefaultNetworkSvp", 2});
  for (auto const& [table, count] : chipAsked.rows) rows[table] = count;
  // Ids of the overlay rows are not the rows of the merged table.
  for (auto const& [table, count] : rows) profile->tableIs(table, {count, table == "IngL3NextHop1" ? 1000U : 0U});

  auto const vxlan = Dovel::make<TesselVxlan::TesselChipAttributesVxlan>();
  vxlan->vxlanCascadedForwardingSupportIs(chipAsked.cascaded);
  vxlan->vxlanHerNextHopTableSupportedIs(chipAsked.her);
  vxlan->vpClassCodeIs(chipAsked.vpClassCode);
  vxlan->defaultVpFlagIs(7);
  vxlan->defaultNetworkSvpSupportedIs(chipAsked.defaultSvp);
  auto const nextHop = Dovel::make<TesselL3Unicast::L3NextHopAttributes>();
  nextHop->l2IfSupportedIs(true);
  nextHop->ownReservedRowIs(chipAsked.ownReservedRow);
  auto const sbr = Dovel::make<TesselTile::TesselSbrAttributes>();
  for (std::uint8_t const n : std::initializer_list<std::uint8_t>{0, 1, 18, 19}) {
    sbr->sbrCodeIs(n, static_cast<std::uint8_t>(100 + n));
  }
  profile->featureIs(vxlan);
  profile->featureIs(nextHop);
  profile->featureIs(sbr);
  return profile;
}

/// "name=value …", without fields that are 0.
class FieldText final : public Asic::FieldVisitor {
 public:
  explicit FieldText(std::string& out) : out_(out) {}
  void number(std::string_view name, std::uint64_t value) override {
    if (value != 0) add(name, std::to_string(value));
  }
  void text(std::string_view name, std::string value) override {
    if (!value.empty() && value != noMac) add(name, value);
  }
  void handle(std::string_view name, Handle const& target) override {
    if (!target) return;
    std::string value;
    Asic::appendHandleText(value, target);
    add(name, value);
  }
  void groupBegin(std::string_view) override {}
  void groupEnd() override {}

 private:
  static constexpr char const* noMac = "00:00:00:00:00:00";
  void add(std::string_view name, std::string const& value) { out_.append(" ").append(name).append("=").append(value); }
  std::string& out_;
};

template <class Id>
std::string idText(TesselCentral::EntryWriteStatus status, Id id) {
  char const* const words[] = {"none", "done", "failed"};
  std::string text = words[status];
  if (id == Id::unprogrammed()) return text + " unprogrammed";
  return id.valid() ? text + " " + Kiln::toText(id) : text;
}

}  // namespace

Meshal::IpGenAddr vtep(unsigned n) { return Meshal::IpAddr(0x0a000000 + n); }
Meshal::IpGenAddr vtep6(unsigned n) { return Meshal::IpGenAddr("2001:db8::" + std::to_string(n)); }
Meshal::EthAddr mac(unsigned n) { return Meshal::EthAddr(0x020000000000 + n); }
Vane::TunnelKey tunnel(Meshal::IpGenAddr const& vtep, std::uint64_t genId) { return {{}, vtep, 0, genId, {}}; }

Vane::NextHopEntry nextHop(unsigned n) {
  Vane::NextHopEntry entry;
  entry.addrIs(Meshal::IpAddr(0xc0a80000 + n));
  entry.ethAddrIs(mac(n));
  entry.l2IntfIs(port(n));
  entry.l3IntfIs(vlanIntf(n));
  return entry;
}

Dovel::Ptr<Vane::HwTunnelConfigEntry const> config(Vane::TunnelKey const& key, std::uint32_t adjId,
                                                   Vane::NextHopEntrySet const& nextHops) {
  auto const entry = Dovel::make<Vane::HwTunnelConfigEntry>(key);
  entry->nextHopEntryListIs(Dovel::make<Vane::NextHopEntryList>(adjId, nextHops));
  return entry;
}

std::string completionName(testing::TestParamInfo<Asic::Completion> const& way) {
  return way.param == Asic::Completion::direct ? "direct" : "deferred";
}

ChipWorld::ChipWorld(Dovel::Ptr<ChipProfile const> const& profile, Asic::Completion completion)
    : chip_(Asic::makeSimulatedChip(profile, completion)),
      chipInfo_(TesselCentral::LogicalModInfo(Asic::ChipInfo(chip_))),
      em_(Dovel::make<Stateway::EntityManager>()) {}

ChipWorld::~ChipWorld() { EXPECT_EQ(messages(), ""); }

TableWorld::TableWorld(ChipSpec const& chipAsked)
    : ChipWorld(makeProfile(chipAsked), chipAsked.completion), dir_(Dovel::make<Kiln::Dir>()) {
  recordsIs(chipAsked);
  programmersIs(chipAsked);
  settle();
  writes();
}

TableWorld::~TableWorld() { chip().stop(); }

void TableWorld::recordsIs(ChipSpec const& chipAsked) {
  fcsd = Dovel::make<TesselCentral::FeatureAgentCommonSmData>();
  fcsd->logicalModInfosIs(true);
  fcsd->portConfigDirIs(Dovel::make<TesselCentral::PortConfigDir>());
  l3Intfs = Dovel::make<VaneL3Intf::Table>();
  for (unsigned n = 1; n <= 9; ++n) {
    TesselCentral::PortInfo info;
    info.kindIs(n == 9 ? TesselCentral::PortKind::lag : TesselCentral::PortKind::port);
    info.numberIs(static_cast<std::uint16_t>(n));
    fcsd->portConfigDir()->portIs(port(n), info);
    l3Intfs->l3IntfIs(vlanIntf(n), Bridging::VlanIdOrNone(n));
  }
  l2State = Dovel::make<TesselCentral::VxlanToL2State>();
  doorbell = TesselVxlan::tunnelNextHopUpdateConfigFactory();
  dvpMap = Dovel::make<TesselL3Common::VxlanDvpToVtepMap>();
  tunnelIndexMap = Dovel::make<TesselL3Common::VxlanTunnelIndexToVtepMap>();
  if (chipAsked.capabilities) {
    capabilities_ = Dovel::make<TesselCentral::VxlanCapabilities>();
    capabilities_->capabilityFlagIs(true);
  }
  ipmc = TesselMcast::ipmcTableFactory();
  Asic::bringUp(*ipmc, em_, chipInfo());
  oif2_ = Dovel::make<TesselL3Tunnel::L3TunnelEgrL3OifHelper>(Dovel::make<Local::EntityManager>());
  oif2_->initTables(chipInfo());
}

void TableWorld::programmersIs(ChipSpec const& chipAsked) {
  using namespace TesselVxlan;
  oif1 = vxlanL3Oif1TableProgrammerFactory(em_, fcsd);
  oif1->initTables(chipInfo());
  nextHops = nextHopTableProgrammerFactory(em_, fcsd, nullptr, l3Intfs, oif2_, ipmc, chipAsked.floods);
  nextHops->mountPathIs(dir_);
  nextHops->initTables(chipInfo());
  ecmp = underlayEcmpProgrammerFactory(em_, fcsd, nextHops);
  ecmp->mountPathIs(dir_);
  if (chipAsked.ecmp) ecmp->initTables(chipInfo());
  virtualPorts = virtualPortProgrammerFactory(em_, fcsd, l2State, capabilities_, dvpMap, tunnelIndexMap);
  virtualPorts->virtualPortTableIs(dir_->createEntity<TesselL3Common::VirtualPortTableMerged>("virtualPortTable"));
  Asic::bringUp(*virtualPorts->virtualPortTable(), em_, chipInfo());
  virtualPorts->initTables(chipInfo());
  if (chipAsked.cascaded) {
    overlay = overlayCascadedTableProgrammerFactory(em_, fcsd, l2State, doorbell);
  } else {
    overlay = overlayNextHopTableProgrammerFactory(em_, fcsd, l2State, doorbell, oif1, nextHops, ecmp);
  }
  overlay->initTables(chipInfo());
}

void ChipWorld::settle() {
  while (chip_->deliver() != 0) {
  }
}

std::uint64_t ChipWorld::writes() { return chip_->writes() - std::exchange(writesSeen_, chip_->writes()); }

std::string ChipWorld::messages() {
  std::string text;
  for (auto const& record : log_.records()) text += record.name + ": " + record.text + "\n";
  log_.clear();
  return text;
}

TesselCentral::VtepIpToTnlIdNhIdMap& TableWorld::vtepIs(Meshal::IpGenAddr const& vtep, Vane::TunnelType type) {
  auto const map = l2State->vtepIpToTnlIdNhIdMapIs(vtep);
  map->tnlKeysIs(type, tunnel(vtep));
  return *map;
}

std::string TableWorld::published(Meshal::IpGenAddr const& vtep) const {
  auto const& map = l2State->vtepIpToTnlIdNhIdMap(vtep);
  return "port " + idText(map->tnlIdEntryStatus(), map->tnlId()) + ", next hop " +
         idText(map->nhIdEntryStatus(), map->nhId());
}

std::string ChipWorld::show(std::string_view table, std::string_view keys) const {
  std::string text;
  chip_->store(table)->forEachEntry([&](Asic::EntryView const& entry) {
    if (!entry.key().starts_with(keys)) return;
    text += entry.key() + (entry.row() ? " row " + Kiln::toText(*entry.row()) : " no row") + ":";
    FieldText fields(text);
    entry.fields(fields);
    text += "\n";
  });
  return text;
}

std::string ChipWorld::keys(std::string_view table) const {
  std::string text;
  chip_->store(table)->forEachEntry([&](Asic::EntryView const& entry) { text += entry.key() + "\n"; });
  return text;
}

Handle TableWorld::virtualPort(Meshal::IpGenAddr const& vtep) {
  if (auto const present = virtualPorts->getEntry(vtep)) return present;
  return virtualPorts->insertEntry(tunnel(vtep), Vane::vxlanTunnel_, vtep, false, nullptr);
}

}  // namespace TableTest
