#include "ProcessWatch.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

namespace lumagrid {

namespace {

std::int64_t kilobytesOf(pid_t process) {
  const std::filesystem::path folder = std::filesystem::path("/proc") / std::to_string(process);
  std::ifstream proportional(folder / "smaps_rollup");
  for (std::string line; std::getline(proportional, line);) {
    if (line.starts_with("Pss:")) return std::strtol(line.c_str() + 4, nullptr, 10);
  }
  std::ifstream pages(folder / "statm");
  std::int64_t size = 0;
  std::int64_t resident = 0;
  pages >> size >> resident;
  return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

// Each process's parent.
std::map<pid_t, pid_t> allProcesses() {
  std::map<pid_t, pid_t> parents;
  std::error_code gone;
  for (std::filesystem::directory_iterator each("/proc", gone), end; each != end; each.increment(gone)) {
    const std::string name = each->path().filename();
    if (std::isdigit(static_cast<unsigned char>(name.front())) == 0) continue;
    std::ifstream file(each->path() / "stat");
    std::string text;
    std::getline(file, text);
    const std::size_t nameEnd = text.rfind(')');  // a name may hold anything
    if (nameEnd == std::string::npos || nameEnd + 4 > text.size()) continue;
    parents[std::atoi(name.c_str())] = std::atoi(text.c_str() + nameEnd + 4);
  }
  return parents;
}

bool descends(pid_t process, pid_t ancestor, const std::map<pid_t, pid_t>& parents) {
  constexpr int kDeepest = 8;
  for (int depth = 0; depth < kDeepest; ++depth) {
    const auto found = parents.find(process);
    if (found == parents.end()) return false;
    if (found->second == ancestor) return true;
    process = found->second;
  }
  return false;
}

}  // namespace

ProcessWatch::ProcessWatch()
    : m_thread([this](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
          look();
          std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
      }) {}

ProcessWatch::Peaks ProcessWatch::takePeaks() {
  m_thread.request_stop();
  m_thread.join();
  return m_peaks;
}

void ProcessWatch::look() {
  m_peaks.own = std::max(m_peaks.own, kilobytesOf(::getpid()));
  std::int64_t together = 0;
  const auto parents = allProcesses();
  for (const auto& [process, parent] : parents) {
    if (descends(process, ::getpid(), parents)) together += kilobytesOf(process);
  }
  m_peaks.descendants = std::max(m_peaks.descendants, together);
}

int openDescriptors() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {})) - 1;
}

}  // namespace lumagrid
