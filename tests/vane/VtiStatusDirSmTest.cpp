#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "platform/kiln/AttributeDefinitions.h"
#include "platform/vane/VtiStatusDirSm.h"

namespace {

using Meshal::IntfId;
using Meshal::Ip6Addr;
using Meshal::IpAddr;

/// Writes down the operations that the feature overrides; sets up "Vxlan1" by itself when it is made.
class Recorder final : public Vane::VXLAN::VtiStatusDirSm {
  KILN_TYPE(Recorder, Vane::VXLAN::VtiStatusDirSm)

 public:
  Recorder(Dovel::Ptr<Vxlan::VtiStatusDir> const& dir, std::string& log)
      : VtiStatusDirSm("recorder", dir, nullptr), log_(log) {
    handleVti(IntfId("Vxlan1"));
  }

  std::function<void(std::string const& call)> during;

 private:
  void note(IntfId intf, std::string const& call) {
    log_ += (log_.empty() ? "" : " ") + intf.name().substr(5) + call;
    if (during) during(call);
  }
  void doSetupVxlanDestUdpPort(IntfId intf, std::uint16_t port) override { note(intf, "udp" + std::to_string(port)); }
  void doSetupVxlanSrcUdpPortRange(IntfId intf, std::uint16_t port, std::uint16_t length) override {
    note(intf, "range" + std::to_string(port) + "+" + std::to_string(length));
  }
  void doSetupVxlanSrcAddr(IntfId intf, IpAddr addr) override { note(intf, "src" + std::to_string(addr.value())); }
  void doSetupVxlanSrcAddrV6(IntfId intf, Ip6Addr const&) override { note(intf, "src6"); }
  void doSetupMlagVtepAddr(IntfId intf, IpAddr) override { note(intf, "mlag"); }
  void doSetupMcastGrpDecap(IntfId intf, IpAddr group) override { note(intf, "group" + std::to_string(group.value())); }
  void doSetupMcastGrpDecap6(IntfId intf, Ip6Addr const&) override { note(intf, "group6"); }
  void doSetupVxlanVarpVtepAddr(IntfId intf, IpAddr) override { note(intf, "varp"); }
  void doSetupVxlanVarpVtepAddr6(IntfId intf, Ip6Addr const&) override { note(intf, "varp6"); }
  void doCleanup(IntfId intf) override { note(intf, "gone"); }

  std::string& log_;
};
KILN_DESCRIBE(Recorder)

class VtiSm : public testing::Test {
 protected:
  std::string take() { return std::exchange(log, ""); }
  Dovel::Ptr<Vxlan::VtiStatus> vti(char const* name) { return dir->vtiStatusIs(IntfId(name)); }

  std::string log;
  Dovel::Ptr<Vxlan::VtiStatusDir> dir = Dovel::make<Vxlan::VtiStatusDir>();
};

TEST_F(VtiSm, setUpIsOneCallPerFieldPortBeforeAddressesAndEachChangeOneMore) {
  auto const vxlan1 = vti("Vxlan1");
  vxlan1->udpPortIs(4789);
  vxlan1->srcAddrIs(IpAddr(1));
  vxlan1->mcastGrpDecapIs(IpAddr(7), true);
  auto const sm = Dovel::make<Recorder>(dir, log);
  EXPECT_EQ(take(), "1udp4789 1range0+0 1src1 1src6 1mlag 1group7 1varp 1varp6");
  // It was set up by the subclass: the start does not do it again. Others wait for the start.
  vti("Vxlan2");
  vti("Vxlan3")->udpPortIs(3);
  dir->vtiStatusDel(IntfId("Vxlan2"));
  EXPECT_EQ(take(), "");
  sm->initializedIs(true);
  EXPECT_EQ(take().substr(0, 6), "3udp3 ");
  vti("Vxlan4");
  EXPECT_EQ(take().substr(0, 6), "4udp0 ");

  vxlan1->udpPortIs(8472);
  vxlan1->udpSrcPortIs(50000);
  vxlan1->udpSrcPortLengthIs(100);
  for (int i = 0; i < 2; ++i) vxlan1->srcAddrIs(IpAddr(5));
  vxlan1->mcastGrpDecapDel(IpAddr(7));
  vxlan1->varpVtepAddr6Is(Ip6Addr({1}));
  EXPECT_EQ(take(), "1udp8472 1range50000+0 1range50000+100 1src5 1group7 1varp6");
  dir->vtiStatusDel(IntfId("Vxlan1"));
  vxlan1->srcAddrIs(IpAddr(6));
  EXPECT_EQ(take(), "1gone");
}

TEST_F(VtiSm, aReplacedInterfaceIsSetUpAndTheFormerForgotten) {
  auto const sm = Dovel::make<Recorder>(dir, log);
  sm->initializedIs(true);
  auto const former = vti("Vxlan1");
  auto const next = Dovel::make<Vxlan::VtiStatus>(IntfId("Vxlan1"));
  next->udpPortIs(2);
  take();
  dir->vtiStatusIs(next);
  EXPECT_EQ(take().substr(0, 6), "1udp2 ");
  former->udpPortIs(3);
  next->udpPortIs(4);
  EXPECT_EQ(take(), "1udp4");
}

TEST_F(VtiSm, anInterfaceMayGoWhileItIsSetUp) {
  auto const sm = Dovel::make<Recorder>(dir, log);
  sm->during = [&](std::string const& call) {
    if (call.starts_with("udp")) dir->vtiStatusDel(IntfId("Vxlan1"));
  };
  sm->initializedIs(true);
  vti("Vxlan1");
  // The rest of a set-up that the departure overtook must not run: it would put back what the cleanup took away.
  EXPECT_EQ(take(), "1udp0 1gone");
}

}  // namespace
