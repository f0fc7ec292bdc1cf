#include <cstdlib>

#include "tests/host/CommandWorld.h"

namespace Host::Test {

/// A network namespace of the test's own, with an uplink and a VXLAN device.
class CaptureScript : public Files {
 protected:
  static constexpr auto name = "tessel-capture-test";

  ~CaptureScript() override { shell(std::string("ip netns del ") + name); }

  static int shell(std::string const& command) {
    return WEXITSTATUS(std::system(("(" + command + ") >/dev/null 2>&1").c_str()));
  }
  static int inside(std::string const& command) { return shell(std::string("ip -n ") + name + " " + command); }
  static int script(std::string const& arguments) {
    return shell("sh " TESSEL_SOURCE_DIR "/scripts/capture " + arguments);
  }
  static bool isMade() {
    return shell(std::string("ip netns add ") + name) == 0 && inside("link add up1 type veth peer name peer") == 0 &&
           inside("link set up1 up") == 0 && inside("link set peer up") == 0 &&
           inside("addr add 10.1.1.1/31 dev up1") == 0 &&
           inside("link add vx1 up type vxlan id 10 local 10.1.1.1 dstport 4789 ttl 9") == 0 &&
           inside("route add 10.255.0.2 via 10.1.1.0") == 0 &&
           inside("neigh add 10.1.1.0 lladdr 02:f1:00:00:00:01 dev up1") == 0 &&
           shell(std::string("bridge -n ") + name + " fdb add 02:00:00:00:00:09 dev vx1 dst 10.255.0.2") == 0;
  }
};

TEST_F(CaptureScript, aCapturedNamespaceIsReadBack) {
  if (!isMade()) GTEST_SKIP() << "network namespaces with veth and VXLAN devices can't be made here";
  auto const directory = (base() / "capture").string();
  ASSERT_EQ(script(directory + " --netns " + name), 0);
  auto const ran = run({"import", "iproute2", directory});
  EXPECT_EQ(ran.code, 0) << ran.err;
  EXPECT_TRUE(inOrder(ran.out, {"\"srcAddr\": \"10.1.1.1\"", "\"udpPort\": 4789", "\"10.1.1.0\"",
                                "\"02:f1:00:00:00:01\"", "\"up1\"", "\"10.255.0.2\"", "\"ttl\": 9", "\"host\": "}))
      << ran.out;
  for (auto const file : {"manifest.json", "sysctl.json", "ip-rule6.json", "bridge-vlan-tunnelshow.json"})
    EXPECT_TRUE(exists(base() / "capture" / file)) << file;
  EXPECT_EQ(script(directory + " --netns " + name), 2) << "the directory is not empty";
}

TEST_F(CaptureScript, whatCannotBeCapturedLeavesNothing) {
  auto const directory = base() / "capture";
  EXPECT_EQ(script(directory.string() + " --netns no-such-namespace"), 2);
  EXPECT_FALSE(exists(directory));
  for (auto const arguments : {"", "--what", "/proc/nothing", "one two"}) EXPECT_EQ(script(arguments), 2) << arguments;
}

}  // namespace Host::Test
