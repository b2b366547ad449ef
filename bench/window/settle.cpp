// Starts a program on the X11 display and tells when its window was there and when it stopped changing.
//   lumagrid-bench-settle [-q QUIET_MS] -- COMMAND [ARGUMENT…]
// Prints one line, times from the start of the program on:
//   mapped   the first window is on screen
//   first    the first change of at least 1 % of the screen
//   settled  the last change of something as large as a picture before QUIET_MS (1500 unless told) without one: what
//            only spins changes too few pixels to count
//   cpu      processor time until then, of the program with all processes that it started
//   pss      memory of the same, what several share counted in parts
// The program is ended then. Fails when there is no display, and when the program ends by itself.
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xdamage.h>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

// What all processes of a group have taken.
struct Usage {
  double processorMs = 0;
  long pssKilobytes = 0;
};

// The processor time of a process, if it belongs to the group.
std::optional<double> processorMs(const std::filesystem::path& process, pid_t group) {
  std::ifstream file(process / "stat");
  std::string text;
  if (!std::getline(file, text)) return std::nullopt;
  const std::size_t nameEnd = text.rfind(')');  // a name may hold anything
  if (nameEnd == std::string::npos) return std::nullopt;
  int itsGroup = 0;
  unsigned long user = 0;
  unsigned long system = 0;
  constexpr char kFields[] = " %*c %*d %d %*d %*d %*d %*u %*u %*u %*u %*u %lu %lu";
  if (std::sscanf(text.c_str() + nameEnd + 1, kFields, &itsGroup, &user, &system) != 3) return std::nullopt;
  if (itsGroup != group) return std::nullopt;
  return static_cast<double>(user + system) * 1000 / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

long pssKilobytes(const std::filesystem::path& process) {
  std::ifstream file(process / "smaps_rollup");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("Pss:")) return std::strtol(line.c_str() + 4, nullptr, 10);
  }
  return 0;
}

Usage usageOf(pid_t group) {
  Usage usage;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const auto time = processorMs(entry.path(), group);
    if (!time) continue;
    usage.processorMs += *time;
    usage.pssKilobytes += pssKilobytes(entry.path());
  }
  return usage;
}

// The pixels of the screen, and what was damaged since they were looked at.
class WatchedScreen {
 public:
  explicit WatchedScreen(Display* display) : m_display(display), m_root(DefaultRootWindow(display)) {
    XWindowAttributes attributes;
    XGetWindowAttributes(display, m_root, &attributes);
    m_width = attributes.width;
    m_height = attributes.height;
    m_seen.resize(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height));
  }

  [[nodiscard]] Window root() const { return m_root; }
  [[nodiscard]] long area() const { return long{m_width} * m_height; }

  void addDamage(const XRectangle& area, double time) {
    m_left = std::min(m_left, std::max<int>(area.x, 0));
    m_top = std::min(m_top, std::max<int>(area.y, 0));
    m_right = std::max(m_right, std::min(area.x + area.width, m_width));
    m_bottom = std::max(m_bottom, std::min(area.y + area.height, m_height));
    m_damagedAt = time;
  }

  // When the damage came, if it changed a quarter of the pixels of some block. Looking takes some milliseconds, so it
  // is done seldom; until then the damage adds up.
  std::optional<double> lookForPicture() {
    constexpr std::chrono::milliseconds kBetweenLooks{50};
    if (m_right <= m_left || m_bottom <= m_top || Clock::now() - m_lookedAt < kBetweenLooks) return std::nullopt;
    const bool isPicture = takeChanges();
    m_left = m_top = 1 << 16;  // beyond every screen
    m_right = m_bottom = 0;
    m_lookedAt = Clock::now();
    return isPicture ? std::optional(m_damagedAt) : std::nullopt;
  }

 private:
  static constexpr int kBlock = 64;  // pixels each way

  struct DestroyImage {
    void operator()(XImage* image) const { XDestroyImage(image); }
  };

  bool takeChanges() {
    const std::unique_ptr<XImage, DestroyImage> image(
        XGetImage(m_display, m_root, m_left, m_top, static_cast<unsigned>(m_right - m_left),
                  static_cast<unsigned>(m_bottom - m_top), AllPlanes, ZPixmap));
    if (!image || image->bits_per_pixel != 32) return false;
    const std::ptrdiff_t blocksAcross = m_width / kBlock + 1;
    std::vector<int> changes(static_cast<std::size_t>(blocksAcross * (m_height / kBlock + 1)));
    for (int y = m_top; y < m_bottom; ++y) {
      const auto* pixel = reinterpret_cast<const std::uint32_t*>(image->data + (y - m_top) * image->bytes_per_line);
      std::uint32_t* seen = m_seen.data() + std::ptrdiff_t{y} * m_width + m_left;
      for (int x = m_left; x < m_right; ++x, ++pixel, ++seen) {
        if (*seen == *pixel) continue;
        *seen = *pixel;
        ++changes[static_cast<std::size_t>(y / kBlock * blocksAcross + x / kBlock)];
      }
    }
    return *std::max_element(changes.begin(), changes.end()) >= kBlock * kBlock / 4;
  }

  Display* m_display;
  Window m_root;
  int m_width = 0;
  int m_height = 0;
  std::vector<std::uint32_t> m_seen;
  int m_left = 1 << 16;
  int m_top = 1 << 16;
  int m_right = 0;
  int m_bottom = 0;
  double m_damagedAt = 0;
  Clock::time_point m_lookedAt;
};

// With a process group of its own, so that all that it starts can be measured and ended with it.
pid_t start(char** command) {
  const pid_t child = ::fork();
  if (child != 0) return child;
  ::setpgid(0, 0);
  if (!std::freopen("/dev/null", "w", stdout) || !std::freopen("/dev/null", "w", stderr)) ::_exit(127);
  ::execvp(command[0], command);
  ::_exit(127);
}

void end(pid_t group) {
  constexpr useconds_t kGraceMicroseconds = 300'000;
  ::kill(-group, SIGTERM);
  ::usleep(kGraceMicroseconds);
  ::kill(-group, SIGKILL);
  ::waitpid(group, nullptr, 0);
}

struct Moments {
  std::optional<double> mapped;
  std::optional<double> first;
  std::optional<double> settled;
};

// Follows the program until it is quiet. Nothing when it ended, or never was.
std::optional<Moments> follow(Display* display, WatchedScreen& screen, int damageEvent, pid_t program, double quietMs) {
  constexpr double kLimitMs = 60000;
  constexpr int kWaitMs = 20;
  const auto begin = Clock::now();
  const auto now = [begin] { return Milliseconds(Clock::now() - begin).count(); };
  Moments moments;
  while (now() < kLimitMs) {
    while (XPending(display) > 0) {
      XEvent event;
      XNextEvent(display, &event);
      if (event.type == MapNotify && !moments.mapped) moments.mapped = now();
      if (event.type != damageEvent || !moments.mapped) continue;
      const XRectangle& area = reinterpret_cast<const XDamageNotifyEvent&>(event).area;
      if (!moments.first && long{area.width} * area.height * 100 >= screen.area()) moments.first = now();
      screen.addDamage(area, now());
    }
    if (const auto time = screen.lookForPicture()) moments.settled = time;
    if (moments.first && moments.settled && now() - *moments.settled > quietMs) return moments;
    pollfd connection = {ConnectionNumber(display), POLLIN, 0};
    ::poll(&connection, 1, kWaitMs);
    if (::waitpid(program, nullptr, WNOHANG) == program) return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
  double quietMs = 1500;
  int at = 1;
  if (at + 1 < argc && std::string_view(argv[at]) == "-q") {
    quietMs = std::atof(argv[at + 1]);
    at += 2;
  }
  if (at + 1 >= argc || std::string_view(argv[at]) != "--") {
    std::fputs("usage: lumagrid-bench-settle [-q QUIET_MS] -- COMMAND [ARGUMENT…]\n", stderr);
    return 2;
  }
  Display* const display = XOpenDisplay(nullptr);
  int damageEvent = 0;
  int damageError = 0;
  if (!display || !XDamageQueryExtension(display, &damageEvent, &damageError)) {
    std::fputs("lumagrid-bench-settle: no X11 display that tells of damage\n", stderr);
    return 2;
  }
  WatchedScreen screen(display);
  XSelectInput(display, screen.root(), SubstructureNotifyMask);
  XDamageCreate(display, screen.root(), XDamageReportRawRectangles);
  XSync(display, False);

  const pid_t program = start(argv + at + 1);
  ::setpgid(program, program);  // it may not have come to that itself
  const auto moments = follow(display, screen, damageEvent + XDamageNotify, program, quietMs);
  if (moments) {
    const Usage usage = usageOf(program);
    std::printf("mapped %.0f ms  first %.0f ms  settled %.0f ms  cpu %.0f ms  pss %ld MB\n", *moments->mapped,
                *moments->first, *moments->settled, usage.processorMs, usage.pssKilobytes / 1024);
  } else {
    std::fputs("lumagrid-bench-settle: the program ended, or was never quiet\n", stderr);
  }
  end(program);
  XCloseDisplay(display);
  return moments ? EXIT_SUCCESS : EXIT_FAILURE;
}
