#include "platform/meshal/IntfId.h"

#include <deque>
#include <unordered_map>

#include "platform/kiln/Exceptions.h"
#include "platform/kiln/Json.h"

namespace Meshal {
namespace {

constexpr std::uint32_t namedTag = 0x02000000;
constexpr std::uint32_t maxNames = 0x01000000;
constexpr std::string_view vlanPrefix = "Vlan";
constexpr std::uint16_t maxVlan = 4094;

/// The names of all interfaces that are not VLAN interfaces. A deque, so that the views in `indexes_` stay good.
class NameTable {
 public:
  static NameTable& instance() {
    static NameTable table;
    return table;
  }

  std::uint32_t index(std::string_view name) {
    if (auto const found = indexes_.find(name); found != indexes_.end()) return found->second;
    if (names_.size() == maxNames) Kiln::throwRangeException("Meshal::IntfId: too many interface names");
    auto const index = static_cast<std::uint32_t>(names_.size());
    indexes_.emplace(names_.emplace_back(name), index);
    return index;
  }

  std::string const& name(std::uint32_t index) const { return names_[index]; }

 private:
  std::deque<std::string> names_;
  std::unordered_map<std::string_view, std::uint32_t> indexes_;
};

/// The number of "VlanN", 0 for any other name. "Vlan010" is another name: one id has one name.
std::uint16_t vlanOf(std::string_view name) {
  if (!name.starts_with(vlanPrefix)) return 0;
  name.remove_prefix(vlanPrefix.size());
  std::uint16_t vlan = 0;
  bool const canonical = !name.starts_with('0') && Kiln::readText(name, vlan);
  return canonical && vlan <= maxVlan ? vlan : std::uint16_t{0};
}

}  // namespace

IntfId::IntfId(std::string_view name) {
  if (name.empty()) return;
  auto const vlan = vlanOf(name);
  id_ = vlan != 0 ? VlanIntfId::tag | vlan : namedTag | NameTable::instance().index(name);
}

std::string IntfId::name() const {
  if (empty()) return {};
  if (VlanIntfId::isVlanIntfId(*this)) return std::string(vlanPrefix) + Kiln::toText(VlanIntfId::vlanId(*this));
  return NameTable::instance().name(id_ & (maxNames - 1));
}

void appendText(std::string& out, IntfId const& intf) { out += intf.name(); }

bool parseText(std::string_view text, IntfId& out) {
  try {
    out = IntfId(text);
    return true;
  } catch (Kiln::RangeException const&) {
    return false;
  }
}

}  // namespace Meshal

KILN_VALUE_CODEC(Meshal::IntfId, "Meshal::IntfId")
