#include "MemoryCache.h"

#include <QTest>
#include <string>
#include <thread>

using namespace lumagrid;

class MemoryCacheTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void leastRecentlyUsedGoesFirst() {
    MemoryCache<std::string, int> cache(30);
    cache.setObject("a", 1, 10);
    cache.setObject("b", 2, 10);
    cache.setObject("c", 3, 5);
    cache.setObject("c", 3, 10);     // in place of itself: all three fit
    QCOMPARE(cache.object("a"), 1);  // used: b is the oldest now
    cache.setObject("d", 4, 15);     // both b and c must go
    QCOMPARE(cache.object("a"), 1);
    QCOMPARE(cache.object("b"), std::nullopt);
    QCOMPARE(cache.object("c"), std::nullopt);
    QCOMPARE(cache.object("d"), 4);
    QCOMPARE(cache.bytes(), std::size_t(25));
    cache.setObject("a", 5, 31);  // beyond the budget: not kept, and the old value would be a lie
    QCOMPARE(cache.object("a"), std::nullopt);
    QCOMPARE(cache.object("d"), 4);
    cache.removeAll();
    QCOMPARE(cache.object("d"), std::nullopt);
    QCOMPARE(cache.bytes(), std::size_t(0));
  }

  void staysWithinItsBudgetUnderThreads() {
    constexpr std::size_t kBudget = 1000;
    MemoryCache<std::string, int> cache(kBudget);
    std::atomic<int> faults = 0;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&cache, &faults, thread] {
        for (int step = 0; step < 20'000; ++step) {
          const int value = (step * 7 + thread) % 100;
          cache.setObject(std::to_string(value), value, std::size_t(value));
          const std::optional<int> found = cache.object(std::to_string(value));
          if (cache.bytes() > kBudget || (found && *found != value)) ++faults;
        }
      });
    }
    threads.clear();
    QCOMPARE(faults.load(), 0);
  }
};

QTEST_APPLESS_MAIN(MemoryCacheTest)
#include "MemoryCacheTest.moc"
