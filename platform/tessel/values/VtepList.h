#pragma once

#include <boost/unordered/unordered_flat_set.hpp>
#include <string>

#include "platform/kiln/Text.h"
#include "platform/vane/TunnelKey.h"

namespace TesselVxlan {

/// The tunnels that use one thing in common, such as an ECMP group; there may be as many as there are VTEPs.
///
/// Iterates in no particular order. A change invalidates iterators: iterate over a copy where the list may change.
class VtepList {
 public:
  using TunnelKeys = boost::unordered_flat_set<Vane::TunnelKey, Kiln::Hash<Vane::TunnelKey>>;

  TunnelKeys const& tunnelKeyList() const { return tunnelKeyList_; }
  bool tunnelKeyListHas(Vane::TunnelKey const& key) const { return tunnelKeyList_.contains(key); }
  void tunnelKeyListIs(Vane::TunnelKey const& key) { tunnelKeyList_.insert(key); }
  void tunnelKeyListDel(Vane::TunnelKey const& key) { tunnelKeyList_.erase(key); }
  void tunnelKeyListDelAll() { tunnelKeyList_.clear(); }

  friend bool operator==(VtepList const& a, VtepList const& b) { return a.tunnelKeyList_ == b.tunnelKeyList_; }

 private:
  TunnelKeys tunnelKeyList_;
};

/// "[KEY, KEY]", the keys in their order.
void appendText(std::string& out, VtepList const& list);
KILN_VALUE_STREAM(VtepList)

}  // namespace TesselVxlan
