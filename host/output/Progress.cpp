#include "host/output/Progress.h"

#include <unistd.h>

#include <iostream>

namespace Host {

namespace {

std::mutex workMutex;
std::string work = "working";
bool watched = false;

std::string presentWork() {
  std::lock_guard const lock(workMutex);
  return work;
}

}  // namespace

void progressIs(std::string next) {
  std::lock_guard const lock(workMutex);
  if (watched) work = std::move(next);
}

Progress::Progress() {
  if (isatty(STDERR_FILENO) == 0) return;
  watched = true;
  writer_ = std::thread([this] { run(); });
}

Progress::~Progress() {
  if (!writer_.joinable()) return;
  {
    std::lock_guard const lock(mutex_);
    end_ = true;
  }
  ended_.notify_one();
  writer_.join();
}

void Progress::run() {
  constexpr auto erased = "\r\x1b[K";
  std::unique_lock lock(mutex_);
  int seconds = 1;
  for (; !ended_.wait_for(lock, std::chrono::seconds(1), [this] { return end_; }); ++seconds) {
    std::cerr << erased << presentWork() << ", " << seconds << " s" << std::flush;
  }
  if (seconds > 1) std::cerr << erased << std::flush;
}

}  // namespace Host
