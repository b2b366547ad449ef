#include "BackgroundQueue.h"

#include <sys/resource.h>
#include <unistd.h>

#include <QSemaphore>
#include <QTest>
#include <atomic>
#include <mutex>
#include <thread>

using namespace lumagrid;

namespace {

// Counts its live copies, and remembers whether one died off the main thread.
class Witness {
 public:
  struct Record {
    std::thread::id main = std::this_thread::get_id();
    std::atomic<int> live = 0;
    std::atomic<bool> diedElsewhere = false;
  };

  explicit Witness(Record& record) : m_record(&record) { ++record.live; }
  Witness(const Witness& other) : m_record(other.m_record) { ++m_record->live; }
  Witness& operator=(const Witness&) = delete;
  ~Witness() {
    if (std::this_thread::get_id() != m_record->main) m_record->diedElsewhere = true;
    --m_record->live;
  }

 private:
  Record* m_record;
};

// Work that keeps its thread until it is opened.
class Gate {
 public:
  BackgroundQueue::Ticket shut(
      BackgroundQueue& queue, std::function<void()> finished = [] {}) {
    auto ticket = queue.enqueue(
        [this] {
          m_taken.release();
          m_open.acquire();
        },
        std::move(finished));
    m_taken.acquire();
    return ticket;
  }
  void open() { m_open.release(); }

 private:
  QSemaphore m_taken;
  QSemaphore m_open;
};

}  // namespace

class BackgroundQueueTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void newestTurnGoesFirst();
  void aDroppedTicketNeverRuns();
  void aTicketDroppedWhileItRunsIsNotReported();
  void destroyingWaitsForWhatIsTakenAndDropsTheRest();
  void theEndOfOnePieceMayDestroyTheQueue();
  void everyPieceEndsOnceOnTheMainThread();
};

void BackgroundQueueTest::newestTurnGoesFirst() {
  BackgroundQueue queue(1);
  Gate gate;
  std::vector<BackgroundQueue::Ticket> tickets;
  tickets.push_back(gate.shut(queue));
  QByteArray order;  // one worker writes it, and the test reads it when all is quiet
  const auto ask = [&](char name) { tickets.push_back(queue.enqueue([&order, name] { order.append(name); }, [] {})); };
  ask('e');
  ask('f');
  QCoreApplication::processEvents();
  ask('c');
  ask('d');
  QCoreApplication::processEvents();
  ask('a');
  ask('b');
  gate.open();
  QTRY_COMPARE(queue.pendingCount(), 0);
  QCOMPARE(order, QByteArray("abcdef"));
}

void BackgroundQueueTest::aDroppedTicketNeverRuns() {
  Witness::Record record;
  std::atomic<int> ran = 0;
  BackgroundQueue queue(1);
  Gate gate;
  const auto gateTicket = gate.shut(queue);
  const auto count = [&ran, witness = Witness(record)] { ++ran; };
  const int held = record.live;

  auto dropped = queue.enqueue(count, count);
  auto replaced = queue.enqueue(count, count);
  const auto moved = std::move(replaced);
  QVERIFY(record.live > held);
  dropped = BackgroundQueue::Ticket();
  QCOMPARE(queue.pendingCount(), 2);  // the gate and the moved one
  { const auto last = queue.enqueue(count, count); }
  QCOMPARE(queue.pendingCount(), 2);
  QCOMPARE(record.live.load(), held + 2);  // closures of dropped work are freed at once
  gate.open();
  QTRY_COMPARE(queue.pendingCount(), 0);
  QCOMPARE(ran.load(), 2);  // work and end of the one that was kept
}

void BackgroundQueueTest::aTicketDroppedWhileItRunsIsNotReported() {
  Witness::Record record;
  bool reported = false;
  BackgroundQueue queue(1);
  Gate gate;
  auto ticket = gate.shut(queue, [&reported, witness = Witness(record)] { reported = true; });
  ticket = BackgroundQueue::Ticket();
  gate.open();
  QTRY_COMPARE(queue.pendingCount(), 0);
  QTRY_COMPARE(record.live.load(), 0);
  QVERIFY(!reported);
  QVERIFY(!record.diedElsewhere);
}

void BackgroundQueueTest::destroyingWaitsForWhatIsTakenAndDropsTheRest() {
  Witness::Record record;
  std::atomic<int> taken = 0;
  std::atomic<int> ended = 0;
  int reported = 0;
  std::vector<BackgroundQueue::Ticket> tickets;  // outlive the queue
  {
    BackgroundQueue queue(3);
    for (int piece = 0; piece < 1000; ++piece) {
      tickets.push_back(queue.enqueue(
          [&taken, &ended, witness = Witness(record)] {
            ++taken;
            std::this_thread::yield();
            ++ended;
          },
          [&reported, witness = Witness(record)] { ++reported; }));
    }
    while (taken == 0) std::this_thread::yield();
  }
  QCOMPARE(ended.load(), taken.load());
  QCoreApplication::processEvents();
  QCOMPARE(reported, 0);
  tickets.clear();
  QCOMPARE(record.live.load(), 0);
  QVERIFY(!record.diedElsewhere);
}

void BackgroundQueueTest::theEndOfOnePieceMayDestroyTheQueue() {
  auto queue = std::make_unique<BackgroundQueue>(2);
  int reported = 0;
  std::vector<BackgroundQueue::Ticket> tickets;
  for (int piece = 0; piece < 20; ++piece) {
    tickets.push_back(queue->enqueue([] {},
                                     [&] {
                                       ++reported;
                                       queue.reset();
                                     }));
  }
  QTRY_VERIFY(!queue);
  QCOMPARE(reported, 1);
}

void BackgroundQueueTest::everyPieceEndsOnceOnTheMainThread() {
  constexpr int kPieces = 5000;
  const auto mainThread = std::this_thread::get_id();
  const int mainNiceness = ::getpriority(PRIO_PROCESS, 0);
  std::atomic<int> notBelowMain = 0;
  std::vector<int> worked(kPieces);
  std::vector<int> reported(kPieces);
  int elsewhere = 0;
  BackgroundQueue queue(8);
  std::vector<BackgroundQueue::Ticket> tickets(kPieces);
  for (int piece = 0; piece < kPieces; ++piece) {
    tickets[std::size_t(piece)] = queue.enqueue(
        [&, piece] {
          ++worked[std::size_t(piece)];
          if (::getpriority(PRIO_PROCESS, id_t(::gettid())) <= mainNiceness) ++notBelowMain;
        },
        [&, piece] {
          ++reported[std::size_t(piece)];
          if (std::this_thread::get_id() != mainThread) ++elsewhere;
        });
    if (piece % 100 == 0) QCoreApplication::processEvents();
    if (piece % 3 == 0) tickets[std::size_t(piece / 2)] = BackgroundQueue::Ticket();
  }
  QTRY_COMPARE(queue.pendingCount(), 0);
  for (std::size_t piece = 0; piece < kPieces; ++piece) {
    QVERIFY(worked[piece] <= 1);
    QVERIFY(reported[piece] <= worked[piece]);
    if (piece > kPieces / 2) QCOMPARE(reported[piece], 1);  // never dropped
  }
  QCOMPARE(elsewhere, 0);
  QCOMPARE(notBelowMain.load(), 0);
  QCOMPARE(::getpriority(PRIO_PROCESS, 0), mainNiceness);
}

QTEST_GUILESS_MAIN(BackgroundQueueTest)
#include "BackgroundQueueTest.moc"
