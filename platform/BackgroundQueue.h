#pragma once

#include <QObject>
#include <functional>
#include <memory>

namespace lumagrid {

// Runs work on a few threads below the priority of the main thread, and brings its end back to the main thread.
// Work that was asked for in the newest turn of the main event loop goes first; within one turn, in the order of
// asking. Main thread for every call.
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

  // One thread per core unless told otherwise.
  explicit BackgroundQueue(int threadCount = 0, QObject* parent = nullptr);
  // Waits for the work that threads have taken; drops the rest.
  ~BackgroundQueue() override;

  // Runs `work` on one of the threads, then `finished` on the main thread.
  [[nodiscard]] Ticket enqueue(std::function<void()> work, std::function<void()> finished);

  // How many pieces wait, run or have yet to report their end, for those who wait until all is quiet.
  [[nodiscard]] int pendingCount() const;

 private:
  class State;
  void deliver();
  std::unique_ptr<State> m_state;
};

}  // namespace lumagrid
