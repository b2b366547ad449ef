#include "ThreadPriority.h"

#include <sys/resource.h>
#include <unistd.h>

namespace lumagrid {

void lowerPriorityOfThisThread() {
  constexpr int kNiceness = 10;
  const auto thread = static_cast<id_t>(::gettid());
  ::setpriority(PRIO_PROCESS, thread, ::getpriority(PRIO_PROCESS, thread) + kNiceness);
}

}  // namespace lumagrid
