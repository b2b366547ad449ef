#include "ProcessWatch.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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

std::map<pid_t, ProcessState> allProcesses() {
  std::map<pid_t, ProcessState> states;
  std::error_code gone;
  for (std::filesystem::directory_iterator each("/proc", gone), end; each != end; each.increment(gone)) {
    const std::string name = each->path().filename();
    if (std::isdigit(static_cast<unsigned char>(name.front())) == 0) continue;
    std::ifstream file(each->path() / "stat");
    std::string text;
    std::getline(file, text);
    const std::size_t nameEnd = text.rfind(')');  // a name may hold anything
    if (nameEnd == std::string::npos || nameEnd + 4 > text.size()) continue;
    states[std::atoi(name.c_str())] = {std::atoi(text.c_str() + nameEnd + 4), text[nameEnd + 2] == 'Z'};
  }
  return states;
}

bool descends(pid_t process, pid_t ancestor, const std::map<pid_t, ProcessState>& states) {
  constexpr int kDeepest = 8;
  for (int depth = 0; depth < kDeepest; ++depth) {
    const auto found = states.find(process);
    if (found == states.end()) return false;
    if (found->second.parent == ancestor) return true;
    process = found->second.parent;
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
  for (const auto& [process, state] : descendants()) together += kilobytesOf(process);
  m_peaks.descendants = std::max(m_peaks.descendants, together);
}

std::map<pid_t, ProcessState> descendants() {
  const auto states = allProcesses();
  auto found = states;
  std::erase_if(found, [&](const auto& each) { return !descends(each.first, ::getpid(), states); });
  return found;
}

int openDescriptors() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {})) - 1;
}

}  // namespace lumagrid
