#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace lumagrid {

// One measurement beside what it is held against.
struct Figure {
  std::string name;
  std::string ours;       // with its unit
  std::string reference;  // what it is, with its own figure
  std::string against;    // ours divided by it, or as the meaning says
  std::string meaning;    // what a change of it would tell
};

// Prints it, and adds it to the file that LUMAGRID_BENCH_FIGURES names: a line of five fields between tabs, from which
// bench/run makes the table at its end.
inline void report(const Figure& figure) {
  std::printf("%-34s %-16s %-40s %s\n", figure.name.c_str(), figure.ours.c_str(), figure.reference.c_str(),
              figure.against.c_str());
  std::fflush(stdout);
  const char* const path = std::getenv("LUMAGRID_BENCH_FIGURES");
  std::FILE* const table = path ? std::fopen(path, "a") : nullptr;
  if (!table) return;
  std::fprintf(table, "%s\t%s\t%s\t%s\t%s\n", figure.name.c_str(), figure.ours.c_str(), figure.reference.c_str(),
               figure.against.c_str(), figure.meaning.c_str());
  std::fclose(table);
}

// "12.3 ms"; "0.45".
inline std::string milliseconds(double time) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.*f ms", time < 100 ? 1 : 0, time);
  return text;
}
inline std::string ratio(double value) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.2f", value);
  return text;
}

}  // namespace lumagrid
