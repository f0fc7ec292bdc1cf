#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace Host {

/// Says on standard error what the program does, where that takes longer than a second and a person is there to read
/// it: one line that is replaced as time passes and erased at the end.
///
/// One at a time. The line is written by a thread of its own; the program states its work by `progressIs`.
class Progress {
 public:
  /// Silent unless standard error is a terminal.
  Progress();
  ~Progress();
  Progress(Progress const&) = delete;
  Progress& operator=(Progress const&) = delete;

 private:
  void run();

  std::mutex mutex_;
  std::condition_variable ended_;
  bool end_ = false;
  std::thread writer_;
};

/// What the program does from now on, as in "reading leaf1". No effect without a `Progress`.
void progressIs(std::string work);

}  // namespace Host
