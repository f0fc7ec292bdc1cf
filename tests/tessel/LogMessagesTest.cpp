#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "platform/tessel/LogMessages.h"

namespace {

// Operators and their tools search for these texts, missing blanks included. Messages without a text get it where they
// are raised.
TEST(LogMessages, areWorded) {
  std::string texts;
  for (auto const* message : TesselLog::descriptors()) {
    texts += std::string(message->name) + ' ' + std::to_string(message->severity) + '\n';
    if (message->format[0] == 0) continue;
    auto const action = message->action.code() != 0 ? std::to_string(message->action.code()) : message->action.text();
    texts += std::string(message->format) + '\n' + message->explanation + '\n' + action + '\n';
  }
  std::ifstream wanted(TESSEL_SOURCE_DIR "/tests/data/log-messages.txt");
  EXPECT_EQ(texts, std::string(std::istreambuf_iterator<char>(wanted), {}));
}

}  // namespace
