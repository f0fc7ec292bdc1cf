#include <functional>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/kiln/Sm.h"
#include "tests/support/TunnelFixture.h"

namespace AgentTest {

namespace {

using testing::HasSubstr;

/// The moments in the life of a status at which its subscribers are called.
enum class Moment { created, tunnelId, nextHop, deleted };

/// Acts once, on the stack of a tunnel status's first change of one kind.
class AtOnce final : public Kiln::Sm {
 public:
  AtOnce(Dovel::Ptr<Vane::HwTunnelStatus const> const& status, Moment moment, std::function<void()> act)
      : moment_(moment), act_(std::move(act)) {
    status_.notifierIs(status);
  }

 private:
  KILN_BASE_TYPE(AgentTest::AtOnce)

  class Entry final : public Kiln::NotifieeConst {
    KILN_BASE_TYPE(AgentTest::AtOnce::Entry)

   public:
    Entry(AtOnce* owner, Dovel::Ptr<Vane::HwTunnelStatusEntry const> const& entry)
        : owner_(owner), key_(entry->tunnelKey()) {
      notifierIs(entry);
      isRegisteredNotifieeIs(true);
    }
    Vane::TunnelKey const& key() const { return key_; }
    void ownerClear() { owner_ = nullptr; }

   protected:
    void onAttribute(Dovel::Change const& change) override {
      if (owner_) owner_->at(change.id == Vane::HwTunnelStatusEntry::hwTunnelIdId ? Moment::tunnelId : Moment::nextHop);
    }

   private:
    AtOnce* owner_;
    Vane::TunnelKey key_;
  };

  void statusDispatch(Dovel::Change const& change) {
    if (change.id != Vane::HwTunnelStatus::tunnelStatusId) return;
    auto const key = change.keyAs<Vane::TunnelKey>();
    Dovel::Ptr<Vane::HwTunnelStatusEntry const> const entry = status_->tunnelStatus(key);
    entries_.del(key);
    if (entry) entries_.add(Dovel::make<Entry>(this, entry));
    at(entry ? Moment::created : Moment::deleted);
  }
  void at(Moment moment) {
    if (moment != moment_ || !act_) return;
    auto const act = std::exchange(act_, nullptr);
    act();
  }

  Moment moment_;
  std::function<void()> act_;
  Kiln::Watch<Vane::HwTunnelStatus const, &AtOnce::statusDispatch> status_{*this};
  Kiln::NestedSms<Vane::TunnelKey, Entry> entries_{*this};
};
KILN_DESCRIBE(AtOnce)
KILN_DESCRIBE(AtOnce::Entry)

/// A subscriber that acts on the stack of a status, for both types at each moment.
class Reentrance : public Tunnels {
 protected:
  void forEach(std::initializer_list<Moment> moments, std::function<void(Vane::TunnelType, Moment)> const& story) {
    for (auto const type : {unicast, member}) {
      for (auto const moment : moments) {
        SCOPED_TRACE(testing::Message() << "type " << Kiln::toText(type) << " moment " << static_cast<int>(moment));
        story(type, moment);
        for (auto const& config : Kiln::keysOf(this->config(type).hwTunnelConfigListColl())) dismiss(type, config);
        EXPECT_EQ(agent.status(type), "");
        EXPECT_EQ(remembered(type), "");
        EXPECT_EQ(agent.chip(), start);
      }
    }
  }
  Dovel::Ptr<AtOnce> atOnce(Vane::TunnelType type, Moment moment, std::function<void()> act) {
    return Dovel::make<AtOnce>(agent.agent().hwTunnelStatus(type), moment, std::move(act));
  }
  void add(Vane::TunnelType type, std::uint64_t genId, Dovel::Ptr<Vane::NextHopEntryList> const& nextHops) {
    auto const entry = Dovel::make<Vane::HwTunnelConfigEntry>(key(vtep(2), genId));
    entry->nextHopEntryListIs(nextHops);
    config(type).hwTunnelConfigListIs(entry);
  }
};
INSTANTIATE_TEST_SUITE_P(Chips, Reentrance, testing::ValuesIn(chipKinds({"cascaded", "flat"})), kindName);

TEST_P(Reentrance, aTunnelMayBeDeletedOnItsStatus) {
  forEach({Moment::created, Moment::tunnelId, Moment::nextHop}, [this](auto type, auto moment) {
    auto const subscriber = atOnce(type, moment, [this, type] { config(type).hwTunnelConfigListDel(key(vtep(2), 1)); });
    configure(type, key(vtep(2), 1), list(7, {1, 2}));
    EXPECT_EQ(agent.status(type), "");
    EXPECT_EQ(agent.chip(), start);
  });
}

TEST_P(Reentrance, aTunnelMayChangeOnItsStatus) {
  using Type = Vane::TunnelType;
  std::pair<char const*, std::function<void(Type)>> const changes[] = {
      {"a newer generation",
       [this](Type type) {
         add(type, 2, list(8, {2, 3}));
       }},
      {"a newer one in its place",
       [this](Type type) {
         add(type, 2, list(8, {2, 3}));
         config(type).hwTunnelConfigListDel(key(vtep(2), 1));
       }},
      {"the same again",
       [this](Type type) {
         config(type).hwTunnelConfigListDel(key(vtep(2), 1));
         add(type, 1, list(8, {2, 3}));
       }},
      {"other next hops", [this](Type type) {
         config(type).hwTunnelConfigList(key(vtep(2), 1))->nextHopEntryListIs(list(8, {2, 3}));
       }}};
  for (auto const& [name, change] : changes) {
    SCOPED_TRACE(name);
    forEach({Moment::created, Moment::tunnelId, Moment::nextHop}, [this, act = change](auto type, auto moment) {
      auto const subscriber = atOnce(type, moment, [&] { act(type); });
      configure(type, key(vtep(2), 1), list(7, {1, 2}));
      EXPECT_THAT(agent.status(type), HasSubstr("adj=8\n"));
      EXPECT_THAT(overlay(vtep(2)), HasSubstr("EcmpGroup1Table[adj:8]"));
    });
  }
}

TEST_P(Reentrance, aKeyThatReturnsOnItsDeletionKeepsItsStatus) {
  forEach({Moment::deleted}, [this](auto type, auto moment) {
    configure(type, key(vtep(2), 1), list(7, {1, 2}));
    auto const before = agent.chip() + agent.statusByKey();
    {
      auto const subscriber = atOnce(type, moment, [this, type] { add(type, 1, list(7, {1, 2})); });
      dismiss(type, key(vtep(2), 1));
    }
    EXPECT_EQ(agent.chip() + agent.statusByKey(), before);
  });
}

TEST_P(Reentrance, aStatusIsRemovedAfterItsTablesOrItsSuccessor) {
  forEach({Moment::deleted}, [this](auto type, auto moment) {
    std::string seen;
    auto const look = [&] {
      seen = agent.status(type) + overlay(vtep(2)) + agent.row("VirtualPortTableMerged", vtep(2));
    };
    configure(type, key(vtep(2), 1), list(7, {1, 2}));
    {
      auto const subscriber = atOnce(type, moment, look);
      configure(type, key(vtep(2), 2), list(7, {1, 2}));
      EXPECT_THAT(seen, HasSubstr("gen=2 tnl=#1 nh=#1 adj=7\n"));
    }
    dismiss(type, key(vtep(2), 1));
    auto const subscriber = atOnce(type, moment, look);
    dismiss(type, key(vtep(2), 2));
    EXPECT_EQ(seen, "absentabsent");
  });
}

TEST_P(Reentrance, anIdMayBecomeActiveOnItsStatus) {
  auto const subscriber =
      atOnce(unicast, Moment::nextHop, [this] { config(unicast).activeNextHopIdListIs(map(vtep(2))->nhId(), true); });
  configure(unicast, key(vtep(2), 1), list(7, {1, 2}));
  EXPECT_THAT(agent.table("L2TunnelIpv4SipTable"), HasSubstr(vtep(2)));
  config(unicast).activeNextHopIdListDel(map(vtep(2))->nhId());
  dismiss(unicast, key(vtep(2), 1));
  EXPECT_EQ(agent.chip(), start);
}

// What is active without a tunnel finds none.
TEST_P(Reentrance, aTunnelThatWasDeletedOnItsStatusIsNotFoundByItsId) {
  auto nhId = Vane::VaneNextHopId();
  auto const subscriber = atOnce(unicast, Moment::nextHop, [&] {
    nhId = map(vtep(2))->nhId();
    config(unicast).hwTunnelConfigListDel(key(vtep(2), 1));
  });
  configure(unicast, key(vtep(2), 1), list(7, {1, 2}));
  config(unicast).activeNextHopIdListIs(nhId, true);
  EXPECT_EQ(agent.table("L2TunnelIpv4SipTable"), "");
  config(unicast).activeNextHopIdListDel(nhId);
}

}  // namespace

}  // namespace AgentTest
