#include <filesystem>
#include <ostream>

#include "host/commands/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/compare/Operand.h"
#include "host/frr/Against.h"
#include "host/show/JsonReport.h"

namespace Host {

namespace {

constexpr char const* kRoutes = "frr-ip-route.json";
constexpr char const* kRoutesV6 = "frr-ipv6-route.json";

/// The captures of a series, one after the other.
std::vector<std::string> capturesOf(std::vector<std::string> const& operands) {
  std::vector<std::string> all;
  for (auto const& operand : operands) {
    for (auto& part : pathsOf(operand)) all.push_back(std::move(part));
  }
  return all;
}

/// The file of the last capture that has it; empty if none does.
std::string lastOf(std::vector<std::string> const& captures, char const* name) {
  std::error_code error;
  for (auto capture = captures.rbegin(); capture != captures.rend(); ++capture) {
    auto const file = std::filesystem::path(*capture) / name;
    if (std::filesystem::exists(file, error)) return file.string();
  }
  return {};
}

Frr::Routes routesOf(std::vector<std::string> const& captures) {
  auto const v4 = lastOf(captures, kRoutes);
  auto const v6 = lastOf(captures, kRoutesV6);
  if (v4.empty() && v6.empty()) {
    auto const last = captures.empty() ? std::filesystem::path() : std::filesystem::path(captures.back());
    throw Kiln::InputError((last / kRoutes).string(), "", "no such file",
                           "expected what vtysh -c 'show ip route vrf all json' prints: tessel-capture takes it along "
                           "where FRR runs");
  }
  Frr::Routes routes;
  for (auto const& file : {v4, v6}) {
    if (!file.empty()) routes.add(Kiln::JsonDocument::read(file));
  }
  return routes;
}

}  // namespace

int againstFrrCommand(AgentOptions const& options, std::ostream& out, std::ostream& err) {
  auto split = options;
  split.inputs = capturesOf(options.inputs);
  auto const routes = routesOf(split.inputs);
  AgentOptions::Traces const traces(options);
  auto const agent = options.makeAgent();
  WarningLog warnings(options, err);
  auto inputs = readAndCheck(*agent, split, warnings);
  agent->apply(std::move(inputs.back()));
  auto const vteps = Frr::compare(*agent, routes);
  if (options.json()) {
    writeObject(out, [&](JsonWriter& json) { Frr::write(json, vteps); });
  } else if (!options.quiet) {
    Frr::print(out, vteps);
  }
  return warnings.codeAfter(Frr::same(vteps) ? kGood : kNotProgrammed);
}

}  // namespace Host
