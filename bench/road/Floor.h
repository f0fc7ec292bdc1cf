#pragma once

#include <vector>

#include "bench/road/FlatRows.h"
#include "bench/road/Road.h"

namespace RoadBench {

/// The same rows, of the same sizes, in flat hash maps and vectors: no notification, no handle, no chip.
///
/// A row of header, virtual port, overlay and termination for each tunnel, found by the VTEP, and its status with both
/// ids; no termination for a member tunnel. Rows of next hops and groups are there once for each adjacency. A flood
/// tunnel has header and port, a row for each next hop that its copies use, its record with an encapsulation id, the
/// way back from that id, and its status.
class Floor {
 public:
  /// `flat`: the overlay row is a merged next hop.
  Floor(Road const& road, bool flat);

  void create();
  void moveLocalVtep();
  void update(std::vector<Road::Update> const& updates);
  void remove(std::vector<std::uint32_t> const& order);
  void replace(std::uint32_t tunnel);

 private:
  using Addr = Meshal::IpGenAddr;
  template <class Key, class Row>
  using Map = FlatMap<Key, Row>;
  template <class Row>
  using Rows = FlatRows<Addr, Row>;

  struct Header {
    Addr sip, dip;
    std::uint16_t udpSrcPort, udpDestPort;
    std::uint8_t bytes[7];
  };
  struct Port {
    std::uint64_t vtepBits;
    std::uint32_t header, count1, count2;
    std::uint16_t tunnelIndex;
    std::uint8_t bytes[22];
  };
  struct Overlay {
    std::uint32_t port, underlay, reserved;
    std::uint8_t ecmp;
  };
  struct MergedNextHop {
    std::uint64_t macAddr;
    std::uint32_t port, oif, underlay;
    std::uint8_t bytes[20];
  };
  struct Sip {
    std::uint32_t port;
    std::uint16_t svp;
  };
  struct Status {
    std::uint32_t tunnelId, nextHopId, group;
  };
  struct Copy {
    std::uint32_t port, nextHop;
    std::uint8_t type;
  };
  struct FloodVtep {
    std::uint32_t encapId;
    std::uint64_t version;
    std::vector<std::pair<std::uint32_t, Addr>> nextHops;  ///< By port.
  };
  struct Group {
    Vane::NextHopEntrySet nextHops;
    std::uint32_t users = 0;
  };

  void add(std::uint32_t tunnel);
  void remove(std::uint32_t tunnel);
  void addFlood(Addr const& vtep, std::uint32_t port, std::uint32_t group);
  void removeFlood(Addr const& vtep);
  void chooseCopies(Addr const& vtep, FloodVtep& flood, std::uint32_t group);

  Road const& road_;
  bool flat_;
  Addr local_;
  Map<Vane::TunnelKey, Status> status_;
  Rows<Header> headers_;
  Rows<Port> ports_;
  Rows<Overlay> overlays_;
  Rows<MergedNextHop> nextHops_;
  Rows<Sip> sips_;
  std::vector<Group> groups_;
  bool overlay_, admitted_, flood_;
  std::uint32_t copies_;               ///< Of a flooded packet to one VTEP.
  Map<std::uint64_t, Copy> copyRows_;  ///< By VTEP and port.
  Map<Addr, FloodVtep> floodVteps_;
  Map<std::uint32_t, Addr> vtepOfEncapId_;
  Map<Addr, Status> floodStatus_;
};

}  // namespace RoadBench
