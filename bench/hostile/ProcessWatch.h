#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <thread>

namespace lumagrid {

// Looks every 50 ms at the memory of this process and of all that descend from it, on a thread of its own.
class ProcessWatch {
 public:
  ProcessWatch();

  // In kilobytes, what several processes share counted in parts; where the system does not tell that of a process, all
  // that it has resident.
  struct Peaks {
    std::int64_t own = 0;
    std::int64_t descendants = 0;  // all together
  };
  // Ends the watch.
  [[nodiscard]] Peaks takePeaks();

 private:
  void look();

  Peaks m_peaks;  // the thread's, until it has ended
  std::jthread m_thread;
};

struct ProcessState {
  pid_t parent;
  bool isZombie;
};
// The processes that descend from this one, by number.
[[nodiscard]] std::map<pid_t, ProcessState> descendants();

// That this process has open.
[[nodiscard]] int openDescriptors();

}  // namespace lumagrid
