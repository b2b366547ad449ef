#include "MemoryCache.h"

#include <QTest>
#include <thread>

using namespace lumagrid;

class MemoryCacheTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void leastRecentlyUsedGoesFirst() {
    MemoryCache<char, int> cache(30);
    for (const char key : QByteArray("abccac")) cache.setObject(key, 1, 10);
    QCOMPARE(cache.object('a'), 1);  // used: b is the oldest now
    cache.setObject('d', 4, 15);     // both b and c must go
    cache.setObject('e', 5, 5);      // the budget to the last byte
    QVERIFY(!cache.object('b') && !cache.object('c') && cache.object('d') && cache.object('e'));
    cache.setObject('a', 6, 31);  // beyond the budget: not kept, and the old value would be a lie
    QVERIFY(!cache.object('a') && cache.object('d') && cache.object('e'));
  }

  void staysWithinItsBudgetUnderThreads() {
    MemoryCache<int, int> cache(1000);
    std::vector<std::jthread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&cache, thread] {
        for (int step = 0; step < 20'000; ++step) {
          const int value = (step * 7 + thread) % 100;
          cache.setObject(value, value, std::size_t(value));
          if (cache.object(value).value_or(value) != value) qFatal("Another's value");
        }
      });
    }
    threads.clear();
    int bytes = 0;
    for (int value = 0; value < 100; ++value) bytes += cache.object(value).value_or(0);
    QVERIFY(bytes > 900 && bytes <= 1000);  // no value takes more than 99
  }
};

QTEST_APPLESS_MAIN(MemoryCacheTest)
#include "MemoryCacheTest.moc"
