#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "WorkerPool.h"

namespace lumagrid {

// Work in the background, whose end comes back to the main thread. What was asked for in the newest turn of the main
// event loop goes first; within one turn, in the order of asking. All queues share the pool of the process, which has
// to be done before the application object goes. Main thread for every call.
class BackgroundQueue : public QObject {
  Q_OBJECT

 public:
  // A claim on one piece of work. Dropping it (or assigning another) cancels the work if no thread has taken it yet;
  // taken work runs to its end, and its `finished` is not called once the claim is gone.
  class Ticket {
   public:
    Ticket() = default;
    Ticket(Ticket&&) noexcept = default;
    Ticket& operator=(Ticket&& other) noexcept;
    ~Ticket();

    // Whether a thread has taken the work and its end has not come back yet.
    [[nodiscard]] bool isRunning() const;

   private:
    friend class BackgroundQueue;
    struct Job;
    void drop();
    explicit Ticket(std::shared_ptr<Job> job) : m_job(std::move(job)) {}
    std::shared_ptr<Job> m_job;
  };

  enum class Urgency { idle, ordinary, urgent };

  // Urgent work goes before that of every ordinary queue, and idle work behind it. `pool` outlives the work.
  explicit BackgroundQueue(Urgency urgency = Urgency::ordinary, QThreadPool& pool = workerPool());

  // Runs `work` on a thread of the pool, then `finished` on the main thread, where both are destroyed too. The ticket
  // may outlive the queue.
  [[nodiscard]] Ticket enqueue(std::function<void()> work, std::function<void()> finished);

  // How many pieces wait, run or have yet to report their end, for those who wait until all is quiet.
  [[nodiscard]] int pendingCount() const { return *m_pendingCount; }

 private:
  const Urgency m_urgency;
  QThreadPool& m_pool;
  int m_turn = 0;
  bool m_isNewTurn = false;
  std::shared_ptr<int> m_pendingCount = std::make_shared<int>(0);
};

}  // namespace lumagrid
