#include "BackgroundQueue.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QRunnable>
#include <atomic>
#include <utility>

#include "ThreadHandOver.h"
#include "moc_BackgroundQueue.cpp"

namespace lumagrid {

// Touched by one thread at a time, the pool's while it runs and otherwise the main one, but for `isTaken`.
struct BackgroundQueue::Ticket::Job : QRunnable {
  QThreadPool& pool;
  std::function<void()> work;
  std::function<void()> finished;
  std::shared_ptr<int> pendingCount;
  std::shared_ptr<Job> self;  // while the pool has it, or its end is on the way
  std::atomic<bool> isTaken = false;
  bool isClaimed = true;
  bool isOver = false;

  Job(QThreadPool& itsPool, std::function<void()> itsWork, std::function<void()> itsEnd, std::shared_ptr<int> count)
      : pool(itsPool), work(std::move(itsWork)), finished(std::move(itsEnd)), pendingCount(std::move(count)) {
    setAutoDelete(false);
    ++*pendingCount;
  }

  void run() override {
    takeOver(this);
    isTaken = true;
    enterWorker();
    work();
    // The last reference is dropped on the main thread, and not with the closure: this thread may be the last to hold
    // that.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [job = HandedOver(std::move(self))]() mutable { job.take()->deliver(); },
        Qt::QueuedConnection);
  }

  void deliver() {
    end();
    if (isClaimed) finished();
  }

  void end() {
    isOver = true;
    --*pendingCount;
  }
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
  return m_job && m_job->isTaken && !m_job->isOver;
}

void BackgroundQueue::Ticket::drop() {
  // Taken out first: destroying the closures may drop this ticket again.
  const std::shared_ptr<Job> job = std::exchange(m_job, nullptr);
  if (!job) return;
  job->isClaimed = false;
  if (job->isOver || !job->pool.tryTake(job.get())) return;
  job->end();
  job->self.reset();
}

BackgroundQueue::BackgroundQueue(Urgency urgency, QThreadPool& pool) : m_urgency(urgency), m_pool(pool) {
  connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this, [this] { m_isNewTurn = true; });
}

BackgroundQueue::Ticket BackgroundQueue::enqueue(std::function<void()> work, std::function<void()> finished) {
  m_turn += std::exchange(m_isNewTurn, false) ? 1 : 0;
  const auto job = std::make_shared<Ticket::Job>(m_pool, std::move(work), std::move(finished), m_pendingCount);
  job->self = job;
  handOver(job.get());
  m_pool.start(job.get(), m_urgency == Urgency::urgent ? kUrgentWork : m_urgency == Urgency::idle ? -1 : m_turn);
  return Ticket(job);
}

}  // namespace lumagrid
