#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "platform/document/Document.h"

namespace Host {

/// What a fabric has more of when it grows.
enum class Grown { vteps, nextHops, vnis };
inline constexpr std::array<std::pair<Grown, std::string_view>, 3> kGrown{
    {{Grown::vteps, "VTEPs"}, {Grown::nextHops, "next hops"}, {Grown::vnis, "VNIs"}}};

/// The document with `count` more of them, with fresh addresses and numbers; nothing if it has none to take as a model,
/// or no number is left.
///
/// - VTEPs: whatever the document states of the last VTEP, by address, is stated of each.
/// - Next hops: of the adjacency of that VTEP, as its last one.
/// - VNIs: mapped as the last one of a local mapping, each with a VLAN of its own.
/// REQUIRES: an agent can take the document.
std::optional<Stateway::StateDocument> grown(Stateway::StateDocument const& document, Grown what, std::size_t count);
Stateway::StateDocument copyOf(Stateway::StateDocument const& document);

}  // namespace Host
