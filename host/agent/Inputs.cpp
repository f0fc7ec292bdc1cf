#include "host/agent/Inputs.h"

#include <fmt/format.h>
#include <malloc.h>

#include <filesystem>
#include <iostream>
#include <iterator>

#include "host/defaults/DefaultLeaf.h"
#include "host/import/CaptureSet.h"
#include "host/output/Progress.h"

namespace Host {

using Stateway::StateDocument;

namespace {

constexpr std::string_view kStandardInput = "-";

std::string restOf(std::istream& in) { return {std::istreambuf_iterator<char>(in), {}}; }

/// The document of a report that was printed together with the state; another document as it is.
StateDocument withoutReport(StateDocument document) {
  auto const format = document.root().find("format");
  if (!format || format->text() == StateDocument::format) return document;
  if (format->text() != kReportFormat) {
    format->fail(fmt::format("expected a document of format {}, or a report of format {}", StateDocument::format,
                             kReportFormat));
  }
  auto const state = document.root().find("document");
  if (!state) document.root().fail("expected a report with the state: run --format json --show state");
  rapidjson::Document copy;
  copy.CopyFrom(state->value(), copy.GetAllocator());
  return StateDocument(Kiln::JsonDocument(std::move(copy), document.source()));
}

std::vector<StateDocument> readAll(std::vector<std::string> const& paths, Choices& choices) {
  std::vector<StateDocument> inputs;
  if (paths.empty()) inputs.push_back(StateDocument::parse(defaultLeaf(), "the built-in leaf"));
  CaptureSet captures;
  for (auto const& path : paths) {
    std::error_code error;
    progressIs("reading " + path);
    if (path == kStandardInput) {
      inputs.push_back(withoutReport(StateDocument::parse(restOf(std::cin), "standard input")));
    } else if (std::filesystem::is_directory(path, error)) {
      captures.overlay(path);
      inputs.emplace_back(Kiln::JsonDocument(captures.stateDocument(choices), path));
    } else {
      inputs.push_back(withoutReport(StateDocument::read(path)));
    }
  }
  return inputs;
}

}  // namespace

std::vector<StateDocument> readInputs(std::vector<std::string> const& paths, Choices& choices) {
  auto inputs = readAll(paths, choices);
  // Captures are much larger than what is made of them; the agent's memory need not be added to theirs.
  malloc_trim(0);
  return inputs;
}

}  // namespace Host
