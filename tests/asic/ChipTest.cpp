// Outcomes on their way from the chip to the writers, and the settings of the simulated chip.

#include <gtest/gtest.h>

#include "tests/asic/TestTables.h"

namespace AsicTest {

class Outcomes : public InBothModes {
 protected:
  Handle user(std::uint32_t key, std::string const& name, std::uint32_t number = 0) {
    UserEntry entry;
    entry.number = number;
    entry.writeResponse = world.note(name);
    return world.user->entryCommit(key, entry);
  }
  Handle leaf(std::uint32_t key, std::string const& name) {
    auto entry = World::leafEntry(key);
    entry.writeResponse = world.note(name);
    return world.leaf->entryCommit(key, entry);
  }
};
INSTANTIATE_TEST_SUITE_P(Modes, Outcomes, kModes, modeName);

TEST_P(Outcomes, ManyAreDeliveredOneByOneWhileOthersAreAdded) {
  std::string expected;
  for (std::uint32_t n = 0; n < 900; ++n) {
    user(n % 5, std::to_string(n), n);
    expected += std::to_string(n) + ":3 ";
    if (n % 3 != 0) {
      ASSERT_TRUE(world.chip->deliverOne());
    }
  }
  EXPECT_EQ(world.chip->pending(), 300U);
  EXPECT_EQ(world.take(), expected);
}

TEST_P(Outcomes, OfWhatIsRemovedOrStoppedAreSettledInSilence) {
  auto const removed = user(1, "a");
  world.user->entryRemove(1);
  world.chip->hold("UserTable");
  auto const held = user(2, "b");
  auto const queued = leaf(1, "c");
  EXPECT_EQ(world.chip->deliver(), 1U);
  world.log.clear();
  auto const last = leaf(2, "d");
  world.chip->stop();
  EXPECT_EQ(world.take(), "");
  EXPECT_EQ(world.chip->pending(), 0U);
  EXPECT_EQ(removed->state(), EntryState::none);
  for (auto const& handle : {held, queued, last}) EXPECT_EQ(handle->state(), EntryState::written);
  user(3, "e");
  world.chip->release();
  EXPECT_EQ(world.take(), "e:3 ") << "what is written after a stop is reported";
}

TEST_P(Outcomes, HeldTableIsPassedByTheOthers) {
  world.chip->hold("UserTable");
  user(1, "a");
  leaf(1, "b");
  user(2, "c");
  EXPECT_EQ(world.take(), "b:3 ");
  EXPECT_EQ(world.chip->pending(), 2U);
  leaf(2, "d");
  world.chip->hold("LeafTable");
  world.chip->release("LeafTable");
  EXPECT_EQ(world.take(), "d:3 ");
  leaf(3, "e");
  world.chip->release();
  EXPECT_EQ(world.take(), "a:3 c:3 e:3 ") << "what was held is older";
}

TEST_P(Outcomes, RefusalsByTableKeyAndCount) {
  world.sim->refuseTable("LeafTable", EntryState::failed);
  leaf(1, "a");
  user(1, "b");
  EXPECT_EQ(world.take(), "a:4 b:3 ");
  world.sim->refuseNone();
  world.sim->refuseKey("2", EntryState::failed);
  leaf(2, "c");
  user(2, "d");
  user(3, "e");
  EXPECT_EQ(world.take(), "c:4 d:4 e:3 ");
  world.sim->refuseNone();
  world.sim->refuseEvery(2, EntryState::failed);
  user(4, "f");
  user(5, "g");
  user(6, "h");
  user(7, "i");
  EXPECT_EQ(world.take(), "f:3 g:4 h:3 i:4 ");
  for (auto const& report : world.chip->tables()) {
    auto const expected = report.name == "LeafTable" ? 2U : report.name == "UserTable" ? 3U : 0U;
    EXPECT_EQ(report.refused, expected) << report.name;
  }
}

TEST_P(Outcomes, ChipShowsNumbersByFieldName) {
  auto entry = World::leafEntry(5);
  entry.addr = Meshal::IpGenAddr("10.0.0.1");
  auto const handle = world.leaf->entryRef(1, entry);
  SlotEntry slot;
  slot.ports.bitListIs(10, 3);
  world.slot->entryWriteAtIndex(Index(1), slot);
  world.userOf(9, nullptr);
  EXPECT_EQ(world.sim->dump(),
            "LeafTable\n  1 number=0x5 addr.0=0x1 addr.1=0xa00000100000000\n"
            "UserTable\n  2 target=0xffffffff other=0xffffffff\n"
            "SlotTable\n  1 ports.5=0x3\n");
}

}  // namespace AsicTest
