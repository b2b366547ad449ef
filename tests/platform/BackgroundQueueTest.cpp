#include "BackgroundQueue.h"

#include <sys/resource.h>
#include <unistd.h>

#include <QSemaphore>
#include <QTest>
#include <atomic>
#include <thread>

using namespace lumagrid;
using Ticket = BackgroundQueue::Ticket;

namespace {

// Counts as alive until its last copy dies on this thread; one that dies on another is never taken off.
std::shared_ptr<void> witness(std::atomic<int>& alive) {
  ++alive;
  return {nullptr, [&alive, thread = std::this_thread::get_id()](void*) {
            if (std::this_thread::get_id() == thread) --alive;
          }};
}

}  // namespace

class BackgroundQueueTest : public QObject {
  Q_OBJECT

 private:
  // Work that has a thread, and keeps it until m_open is released.
  [[nodiscard]] Ticket hold(
      BackgroundQueue& queue, std::function<void()> finished = [] {}) {
    const auto work = [this] {
      m_taken.release();
      m_open.acquire();
    };
    auto ticket = queue.enqueue(work, std::move(finished));
    m_taken.acquire();
    return ticket;
  }

  QSemaphore m_taken;
  QSemaphore m_open;

 private Q_SLOTS:
  void newestTurnGoesFirstAndWhatIsDroppedNever() {
    std::atomic<int> alive = 0;
    QByteArray order;  // one worker writes it, and the test reads it when all is quiet
    QByteArray reported;
    BackgroundQueue queue(1);
    Ticket held = hold(queue, [&reported, witness = witness(alive)] { reported.append("held"); });
    const auto enqueue = [&](char name) {
      return queue.enqueue([&order, name, witness = witness(alive)] { order.append(name); },
                           [&reported, name] { reported.append(name); });
    };
    std::vector<Ticket> tickets;
    for (const char* turn : {"ef", "cd", "ab"}) {
      tickets.push_back(enqueue(turn[0]));
      { const Ticket dropped = enqueue('x'); }
      Ticket replaced = enqueue('x');
      replaced = enqueue(turn[1]);
      tickets.push_back(std::move(replaced));
      QCoreApplication::processEvents();
    }
    held = Ticket();  // while it runs
    QCOMPARE(queue.pendingCount(), 7);
    QCOMPARE(alive.load(), 7);  // closures of dropped work are freed at once
    m_open.release();
    QTRY_COMPARE(queue.pendingCount(), 0);
    QCOMPARE(order, QByteArray("abcdef"));
    QCOMPARE(reported, order);
    tickets.clear();
    QCOMPARE(alive.load(), 0);
  }

  void destroyingWaitsForWhatIsTakenAndDropsTheRest() {
    std::atomic<int> alive = 0;
    std::atomic<int> taken = 0;
    std::atomic<int> ended = 0;
    int reported = 0;
    std::vector<Ticket> tickets;  // outlive the queue
    {
      BackgroundQueue queue(3);
      for (int piece = 0; piece < 1000; ++piece) {
        const auto work = [&taken, &ended, witness = witness(alive)] {
          ++taken;
          std::this_thread::yield();
          ++ended;
        };
        tickets.push_back(queue.enqueue(work, [&reported, witness = witness(alive)] { ++reported; }));
      }
      while (taken == 0) std::this_thread::yield();
    }
    QCOMPARE(ended.load(), taken.load());
    QCoreApplication::processEvents();
    QCOMPARE(reported, 0);
    tickets.clear();
    QCOMPARE(alive.load(), 0);
  }

  void theEndOfOnePieceMayDestroyTheQueue() {
    auto queue = std::make_unique<BackgroundQueue>(2);
    int reported = 0;
    const auto destroy = [&] {
      ++reported;
      queue.reset();
    };
    std::vector<Ticket> tickets;
    for (int piece = 0; piece < 20; ++piece) tickets.push_back(queue->enqueue([] {}, destroy));
    QTRY_VERIFY(!queue);
    QCOMPARE(reported, 1);
  }

  void everyPieceEndsOnceOnTheMainThread() {
    constexpr std::size_t kPieces = 5000;
    const auto mainThread = std::this_thread::get_id();
    const int mainNiceness = ::getpriority(PRIO_PROCESS, 0);
    std::atomic<int> faults = 0;
    std::vector<int> worked(kPieces);
    std::vector<int> reported(kPieces);
    BackgroundQueue queue(8);
    std::vector<Ticket> tickets(kPieces);
    for (std::size_t piece = 0; piece < kPieces; ++piece) {
      const auto work = [&, piece] {
        if (++worked[piece] != 1 || ::getpriority(PRIO_PROCESS, id_t(::gettid())) <= mainNiceness) ++faults;
      };
      const auto finished = [&, piece] {
        if (++reported[piece] != worked[piece] || std::this_thread::get_id() != mainThread) ++faults;
      };
      tickets[piece] = queue.enqueue(work, finished);
      if (piece % 100 == 0) QCoreApplication::processEvents();
      if (piece % 3 == 0) tickets[piece / 2] = Ticket();
    }
    QTRY_COMPARE(queue.pendingCount(), 0);
    QCOMPARE(faults.load(), 0);
    QCOMPARE(std::count(reported.begin() + kPieces / 2, reported.end(), 1), qsizetype(kPieces / 2));  // never dropped
    QCOMPARE(::getpriority(PRIO_PROCESS, 0), mainNiceness);
  }
};

QTEST_GUILESS_MAIN(BackgroundQueueTest)
#include "BackgroundQueueTest.moc"
