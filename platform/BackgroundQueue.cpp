#include "BackgroundQueue.h"

#include <QAbstractEventDispatcher>
#include <QPointer>
#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "ParallelFor.h"
#include "ThreadPriority.h"
#include "moc_BackgroundQueue.cpp"

namespace lumagrid {

namespace {

// Smallest first: the newest turn, then the order of asking.
struct Place {
  std::uint64_t turnsFromNewest = 0;
  std::uint64_t sequence = 0;

  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes what the compiler makes for a null pointer
  friend auto operator<=>(const Place&, const Place&) = default;
};

}  // namespace

// The closures are touched by one thread at a time: the worker while it runs them, otherwise the main thread, which
// also destroys them. `claimed`, `owner` and `place` belong to the main thread.
struct BackgroundQueue::Ticket::Job {
  std::function<void()> work;
  std::function<void()> finished;
  bool claimed = true;
  State* owner = nullptr;  // null once the job is delivered, or the queue gone
  Place place;
};

class BackgroundQueue::State {
 public:
  using Job = Ticket::Job;

  State(BackgroundQueue& queue, int threadCount) : m_queue(queue) {
    for (int thread = 0; thread < threadCount; ++thread) m_threads.emplace_back([this] { serve(); });
  }

  ~State() {
    {
      const std::scoped_lock lock(m_mutex);
      m_stopping = true;
    }
    m_wake.notify_all();
    for (std::thread& thread : m_threads) thread.join();
    // Tickets may outlive the queue. Destroying closures may drop tickets, which must not come back here.
    for (const auto& [place, job] : m_waiting) job->owner = nullptr;
    for (const auto& job : m_done) job->owner = nullptr;
  }
  Q_DISABLE_COPY_MOVE(State)

  void beginTurn() { ++m_turn; }

  void add(const std::shared_ptr<Job>& job) {
    job->owner = this;
    job->place = {UINT64_MAX - m_turn, m_sequence++};
    {
      const std::scoped_lock lock(m_mutex);
      m_waiting.emplace(job->place, job);
    }
    m_wake.notify_one();
  }

  void removeWaiting(const Job& job) {
    const std::scoped_lock lock(m_mutex);
    m_waiting.erase(job.place);  // the ticket still holds the job: nothing is destroyed under the lock
  }

  [[nodiscard]] bool isWaiting(const Job& job) const {
    const std::scoped_lock lock(m_mutex);
    return m_waiting.count(job.place) > 0;
  }

  // How many ended pieces one delivery brings; what ends from here on asks for another.
  [[nodiscard]] std::size_t beginDelivery() {
    const std::scoped_lock lock(m_mutex);
    m_deliveryPosted = false;
    return m_done.size();
  }

  [[nodiscard]] std::shared_ptr<Job> takeDone() {
    const std::scoped_lock lock(m_mutex);
    if (m_done.empty()) return nullptr;
    std::shared_ptr<Job> job = std::move(m_done.front());
    m_done.pop_front();
    return job;
  }

  [[nodiscard]] int pendingCount() const {
    const std::scoped_lock lock(m_mutex);
    return int(m_waiting.size() + m_done.size()) + m_running;
  }

 private:
  void serve() {
    lowerPriorityOfThisThread();
    std::unique_lock lock(m_mutex);
    for (;;) {
      m_wake.wait(lock, [this] { return m_stopping || !m_waiting.empty(); });
      if (m_stopping) return;
      std::shared_ptr<Job> job = std::move(m_waiting.extract(m_waiting.begin()).mapped());
      ++m_running;
      lock.unlock();
      job->work();
      lock.lock();
      --m_running;
      m_done.push_back(std::move(job));  // the last reference is dropped on the main thread
      if (!std::exchange(m_deliveryPosted, true)) {
        QMetaObject::invokeMethod(&m_queue, &BackgroundQueue::deliver, Qt::QueuedConnection);
      }
    }
  }

  BackgroundQueue& m_queue;
  std::uint64_t m_turn = 0;      // main thread
  std::uint64_t m_sequence = 0;  // main thread

  mutable std::mutex m_mutex;  // guards what follows
  std::condition_variable m_wake;
  std::map<Place, std::shared_ptr<Job>> m_waiting;
  std::deque<std::shared_ptr<Job>> m_done;
  int m_running = 0;
  bool m_deliveryPosted = false;
  bool m_stopping = false;

  std::vector<std::thread> m_threads;
};

BackgroundQueue::Ticket& BackgroundQueue::Ticket::operator=(Ticket&& other) noexcept {
  if (this != &other) {
    drop();
    m_job = std::move(other.m_job);
  }
  return *this;
}

BackgroundQueue::Ticket::~Ticket() {
  drop();
}

bool BackgroundQueue::Ticket::isRunning() const {
  return m_job && m_job->owner && !m_job->owner->isWaiting(*m_job);
}

void BackgroundQueue::Ticket::drop() {
  // Taken out first: destroying the closures may drop this ticket again.
  const std::shared_ptr<Job> job = std::exchange(m_job, nullptr);
  if (!job) return;
  job->claimed = false;
  if (job->owner) job->owner->removeWaiting(*job);
}

BackgroundQueue::BackgroundQueue(int threadCount, QObject* parent) : QObject(parent) {
  if (threadCount <= 0) threadCount = coreCount();
  m_state = std::make_unique<State>(*this, threadCount);
  connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this,
          [this] { m_state->beginTurn(); });
}

BackgroundQueue::~BackgroundQueue() = default;

BackgroundQueue::Ticket BackgroundQueue::enqueue(std::function<void()> work, std::function<void()> finished) {
  auto job = std::make_shared<Ticket::Job>();
  job->work = std::move(work);
  job->finished = std::move(finished);
  m_state->add(job);
  return Ticket(std::move(job));
}

int BackgroundQueue::pendingCount() const {
  return m_state->pendingCount();
}

void BackgroundQueue::deliver() {
  // `finished` may drop other tickets, run a nested event loop, or destroy the queue.
  const QPointer<BackgroundQueue> alive(this);
  for (auto count = m_state->beginDelivery(); alive && count > 0; --count) {
    const std::shared_ptr<Ticket::Job> job = m_state->takeDone();
    if (!job) return;
    job->owner = nullptr;
    if (job->claimed) job->finished();
  }
}

}  // namespace lumagrid
