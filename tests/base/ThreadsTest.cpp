#include "BackgroundQueue.h"

#include <sys/resource.h>
#include <unistd.h>

#include <QSemaphore>
#include <QTest>
#include <atomic>
#include <thread>

#include "MemoryCache.h"
#include "TemporaryHome.h"

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

struct OwnPool : QThreadPool {
  explicit OwnPool(int threads) { setMaxThreadCount(threads); }
};

}  // namespace

// What thumbnails are made and kept by.
class ThreadsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void newestTurnGoesFirstAndWhatIsDroppedNever() {
    std::atomic<int> alive = 0;
    QByteArray order;  // one worker writes it, and the test reads it when all is quiet
    QByteArray reported;
    QSemaphore open;
    OwnPool pool(1);
    BackgroundQueue queue(BackgroundQueue::Urgency::ordinary, pool);
    const auto enqueue = [&](char name) {
      const auto work = [&order, &open, name, witness = witness(alive)] {
        if (name == '0') open.acquire();
        order.append(name);
      };
      return queue.enqueue(work, [&reported, name] { reported.append(name); });
    };
    Ticket running = enqueue('0');
    QTRY_VERIFY(running.isRunning());
    std::vector<Ticket> tickets;
    for (const char* turn : {"ef", "cd", "ab"}) {
      tickets.push_back(enqueue(turn[0]));
      Ticket replaced = enqueue('x');
      replaced = enqueue(turn[1]);
      tickets.push_back(std::move(replaced));
      QCoreApplication::processEvents();
    }
    running = Ticket();
    QCOMPARE(queue.pendingCount(), 7);
    QCOMPARE(alive.load(), 7);  // closures of dropped work are freed at once
    open.release();
    QTRY_COMPARE(queue.pendingCount(), 0);
    QCOMPARE(order, QByteArray("0abcdef"));
    QCOMPARE(reported, QByteArray("abcdef"));
    tickets.clear();
    QCOMPARE(alive.load(), 0);
  }

  // What threads have taken runs to its end, and the rest with the tickets that outlive it.
  void theEndOfOnePieceMayDestroyTheQueue() {
    std::atomic<int> alive = 0;
    std::atomic<int> ended = 0;
    int reported = 0;
    QSemaphore open(10);
    OwnPool pool(2);
    auto queue = std::make_unique<BackgroundQueue>(BackgroundQueue::Urgency::ordinary, pool);
    std::vector<Ticket> tickets;
    for (int piece = 0; piece < 1000; ++piece) {
      const auto work = [&ended, &open, witness = witness(alive)] {
        open.acquire();
        ++ended;
      };
      const auto finished = [&reported, &open, &queue, &tickets, witness = witness(alive)] {
        ++reported;
        queue.reset();
        tickets.clear();
        open.release(1000);
      };
      tickets.push_back(queue->enqueue(work, finished));
    }
    while (ended < 10) std::this_thread::yield();  // several ends wait to be reported
    QTRY_VERIFY(!queue);
    pool.waitForDone();
    QCoreApplication::processEvents();
    QCOMPARE(reported, 1);
    QVERIFY(ended <= 12);
    QCOMPARE(alive.load(), 0);
  }

  void everyPieceEndsOnceOnTheMainThread() {
    constexpr int kPieces = 5000;
    const int mainNiceness = ::getpriority(PRIO_PROCESS, 0);
    std::atomic<int> worked = 0;
    int reported = 0;
    OwnPool pool(8);
    BackgroundQueue queue(BackgroundQueue::Urgency::ordinary, pool);
    std::vector<Ticket> tickets;
    for (int piece = 0; piece < kPieces; ++piece) {
      const auto work = [&] { worked += ::getpriority(PRIO_PROCESS, id_t(::gettid())) > mainNiceness; };
      tickets.push_back(queue.enqueue(work, [&reported] { reported += ::gettid() == ::getpid(); }));
      (void)queue.enqueue([] {}, [] { qFatal("Told of the end of what was dropped"); });
      if (piece % 100 == 0) QCoreApplication::processEvents();
    }
    QTRY_COMPARE(queue.pendingCount(), 0);
    QCOMPARE(worked.load(), kPieces);
    QCOMPARE(reported, kPieces);
    QCOMPARE(::getpriority(PRIO_PROCESS, 0), mainNiceness);
  }

  // Also those that nobody holds any more, however soon the main thread hears of their end.
  void closuresAreDestroyedOnTheMainThread() {
    std::atomic<int> alive = 0;
    OwnPool pool(1);
    BackgroundQueue queue(BackgroundQueue::Urgency::ordinary, pool);
    for (int piece = 0; piece < 500; ++piece) {
      std::atomic<bool> mayEnd = false;
      Ticket ticket = queue.enqueue([&mayEnd, witness = witness(alive)] { mayEnd.wait(false); }, [] {});
      while (!ticket.isRunning()) std::this_thread::yield();
      ticket = {};
      mayEnd = true;
      mayEnd.notify_one();
      while (queue.pendingCount() > 0) QCoreApplication::processEvents();
    }
    pool.waitForDone();
    QCOMPARE(alive.load(), 0);
  }

  // The C library would keep what lies between blocks that are still in use. (A sanitizer keeps all of it on purpose.)
  void freedMemoryGoesBackToTheSystem() {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    const auto residentBytes = [] {
      return readFile("/proc/self/statm")->split(' ')[1].toLongLong() * ::getpagesize();
    };
    const qint64 before = residentBytes();
    std::vector<QByteArray> blocks(2000);
    parallelFor(2000, [&blocks](int block) { blocks[std::size_t(block)] = QByteArray(64 << 10, 'x'); });
    QVERIFY(residentBytes() - before > 100 << 20);
    for (std::size_t block = 0; block < blocks.size(); ++block) {
      if (block % 100 != 0) blocks[block] = {};
    }
    QTRY_VERIFY_WITH_TIMEOUT(residentBytes() - before < 40 << 20, 20'000);
#endif
  }

  void leastRecentlyUsedGoesFirst() {
    MemoryCache<char, int> cache(30);
    for (const char key : QByteArray("abccac")) cache.setObject(key, 1, 10);
    QCOMPARE(cache.object('a'), 1);  // used: b is the oldest now
    cache.setObject('d', 4, 15);     // both b and c must go
    cache.setObject('e', 5, 5);      // the budget to the last byte
    QVERIFY(!cache.object('b') && !cache.object('c') && cache.object('d') && cache.object('e'));
    cache.setObject('a', 6, 31);  // beyond the budget: not kept, and the old value would be a lie
    QVERIFY(!cache.object('a') && cache.object('d') && cache.object('e'));

    struct IsOdd {
      bool operator()(int value) const { return value % 2 != 0; }
    };
    MemoryCache<char, int, std::hash<char>, IsOdd> inUse(30);
    for (const int value : {1, 2, 3}) inUse.setObject(static_cast<char>('a' + value), value, 10);
    inUse.makeRoom(20);  // only the even one can go
    QVERIFY(inUse.object('b') && !inUse.object('c') && inUse.object('d'));
  }
};

QTEST_GUILESS_MAIN(ThreadsTest)
#include "ThreadsTest.moc"
