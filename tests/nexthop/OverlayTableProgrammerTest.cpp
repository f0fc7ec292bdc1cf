#include <gtest/gtest.h>

#include "platform/kiln/Trace.h"
#include "tests/support/TableFixture.h"

namespace {

using namespace TableTest;

struct Kind {
  bool cascaded;
  Asic::Completion completion;
};

void PrintTo(Kind const& kind, std::ostream* out) {
  *out << (kind.cascaded ? "cascaded" : "next hops") << (kind.completion == Asic::Completion::direct ? "" : ", deferred");
}

/// The overlay row of a VTEP, on both kinds of chip and with both ways of completion.
class OverlayRows : public testing::TestWithParam<Kind> {
 protected:
  std::string table() const { return GetParam().cascaded ? "IngL3EcmpMember0Table" : "L3NextHop1Table"; }
  /// The chip's table whose rows are the next-hop ids.
  std::string idTable() const { return GetParam().cascaded ? table() : "IngL3NextHop1"; }
  TableWorld make(std::uint32_t rows = 64) const;

  /// The row of VTEP `n` over next hop `via`, as the tunnel programmers write it.
  Handle insert(TableWorld& world, unsigned n, unsigned via, Vane::TunnelType type = Vane::vxlanTunnel_) const {
    auto const key = tunnel(vtep(n));
    return world.overlay->insertEntry(key, type, false, world.virtualPort(vtep(n)),
                                      world.nextHops->insertEntry(key, nextHop(via)));
  }
};

INSTANTIATE_TEST_SUITE_P(Chips, OverlayRows,
                         testing::Values(Kind{false, Asic::Completion::direct}, Kind{false, Asic::Completion::deferred},
                                         Kind{true, Asic::Completion::direct}, Kind{true, Asic::Completion::deferred}));
}
