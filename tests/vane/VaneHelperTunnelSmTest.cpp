#include <gtest/gtest.h>

#include <functional>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/vane/VaneHelperTunnelSm.h"

namespace {

using Vane::TunnelKey;
using Vane::VaneNextHopId;
using EntryPtr = Dovel::Ptr<Vane::HwTunnelConfigEntry const>;

TunnelKey key(std::uint64_t n) {
  return {
      Meshal::IpGenAddr(), Meshal::IpGenAddr(Meshal::IpAddr(0x0aff0000U + static_cast<std::uint32_t>(n))), 0, 1, {}};
}
std::string number(TunnelKey const& k) { return std::to_string(k.dst().v4Addr().value() & 0xff); }

/// Writes down what it is called for; `during` may interfere.
class Recorder final : public VaneHelper::VaneHelperTunnelSm {
  KILN_TYPE(Recorder, VaneHelper::VaneHelperTunnelSm)

 public:
  Recorder(Dovel::Ptr<Vane::HwTunnelConfig> const& config, std::string& log)
      : VaneHelperTunnelSm(nullptr, Vane::vxlanTunnel_, config, nullptr), log_(log) {}

  std::function<void(std::string const& call)> during;

 private:
  void note(std::string const& call) {
    log_ += (log_.empty() ? "" : " ") + call;
    if (during) during(call);
  }
  void hwInit() override { note("init" + std::to_string(hwTunnelConfig()->hwInit())); }
  void hwCleanup() override { note("cleanup" + std::to_string(hwTunnelConfig()->hwCleanup())); }
  void doHandleTunnelCreate(EntryPtr const& entry) override { note("+" + number(entry->tunnelKey())); }
  void doHandleTunnelDelete(EntryPtr const& entry) override { note("-" + number(entry->tunnelKey())); }
  void doHandleTunnelTTL(EntryPtr const& entry) override { note("ttl" + number(entry->tunnelKey())); }
  void doHandleTunnelNextHopId(EntryPtr const& entry) override { note("nh" + number(entry->tunnelKey())); }
  void handleActiveNextHopId(VaneNextHopId id) override { note("active" + std::to_string(id.value())); }
  void verifyTunnelsAndNextHops() override { note("verify"); }
  void handleInitialized() override { note("start"); }

  std::string& log_;
};
KILN_DESCRIBE(Recorder)

class TunnelSm : public testing::Test {
 protected:
  ~TunnelSm() override {
    sm->during = nullptr;
    sm = nullptr;
    config = nullptr;
    EXPECT_EQ(Dovel::Node::aliveCount(), alive_);
  }
  Dovel::Ptr<Vane::HwTunnelConfigEntry> add(std::uint64_t n) { return config->hwTunnelConfigListIs(key(n)); }
  void del(std::uint64_t n) { config->hwTunnelConfigListDel(key(n)); }
  std::string take() { return std::exchange(log, ""); }
  Dovel::Ptr<Vane::NextHopEntryList> list() { return Dovel::make<Vane::NextHopEntryList>(1, Vane::NextHopEntrySet{}); }

 private:
  std::size_t const alive_ = Dovel::Node::aliveCount();

 protected:
  std::string log;
  Dovel::Ptr<Vane::HwTunnelConfig> config = Vane::hwTunnelConfigFactory(Vane::vxlanTunnel_);
  Dovel::Ptr<Recorder> sm = Dovel::make<Recorder>(config, log);
};

TEST_F(TunnelSm, eachChangeIsOneCallOnceItIsStarted) {
  add(2)->ttlIs(3);
  del(2);
  auto const former = add(1);
  config->hwInitIs(1);
  sm->initializedIs(false);
  EXPECT_EQ(take(), "");
  sm->initializedIs(true);
  EXPECT_EQ(take(), "start +1");
  sm->initializedIs(true);
  EXPECT_EQ(take(), "");
  auto const entry = Dovel::make<Vane::HwTunnelConfigEntry>(key(1));
  config->hwTunnelConfigListIs(entry);
  former->ttlIs(1);
  entry->nextHopEntryListIs(list());
  entry->ttlIs(9);
  config->hwInitIs(2);
  config->hwCleanupIs(2);
  config->activeNextHopIdListIs(VaneNextHopId(7), true);
  config->activeNextHopIdListDel(VaneNextHopId(7));
  sm->handleVerify();
  del(1);
  entry->ttlIs(10);
  EXPECT_EQ(take(), "-1 +1 nh1 ttl1 init2 cleanup2 active7 active7 verify -1");
}

TEST_F(TunnelSm, theWalkOfTheStartSurvivesWhatItsHandlersDo) {
  for (std::uint64_t n = 1; n <= 20; ++n) add(n);
  int created = 0;
  sm->during = [&](std::string const& call) {
    if (call == "start") add(22);
    if (call[0] == '+' && ++created == 3) {
      for (std::uint64_t n = 1; n <= 22; ++n) del(n);
      add(21);
    }
  };
  sm->initializedIs(true);
  // Three were handled, the same three and no other were deleted, and the new one was handled once.
  EXPECT_EQ(created, 4);
  EXPECT_EQ(std::count(log.begin(), log.end(), '-'), 3);
  EXPECT_TRUE(log.starts_with("start +1 +2 +3 ") && log.ends_with("+21")) << log;
}

TEST_F(TunnelSm, aTunnelMayBeDeletedOrReplacedInsideItsOwnHandlers) {
  sm->initializedIs(true);
  take();
  bool back = false;
  sm->during = [&](std::string const& call) {
    if (call == "+1") del(1);
    if (call == "nh2") del(2);
    if (call == "-3" && !std::exchange(back, true)) add(3);
    if (call == "+4") config->hwTunnelConfigListIs(Dovel::make<Vane::HwTunnelConfigEntry>(key(3)));
  };
  add(1);
  EXPECT_EQ(take(), "+1 -1");
  add(2)->nextHopEntryListIs(list());
  EXPECT_EQ(take(), "+2 nh2 -2");
  add(3);
  add(4);
  del(3);
  EXPECT_EQ(take(), "+3 +4 -3 +3 -3");
}

}  // namespace
