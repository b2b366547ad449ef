#include <QTest>

#include "FakePlatform.h"
#include "PhotoFolder.h"

using namespace lumagrid;

class PhotoLibrarySelectionTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void selects_data() {
    QTest::addColumn<QString>("steps");  // each a letter and, for some, an index
    QTest::addColumn<QString>("selected");
    QTest::addColumn<qint64>("current");
    const auto row = [](const char* name, const char* steps, const char* selected, int current) {
      QTest::newRow(name) << QString::fromLatin1(steps) << QString::fromLatin1(selected) << qint64{current};
    };
    row("a toggled photo is selected", "o5 t3", "3", 5);
    row("toggled twice, it is not, and stays the anchor", "o5 t3 t3 e5", "3 4 5", 5);
    row("without an anchor from the current photo", "o6 e2", "2 3 4 5 6", 6);
    row("a second range starts where the first ended", "o0 t2 e5 e8", "2 3 4 5 6 7 8", 0);
    row("a range downwards", "o0 t7 e3 e2", "2 3 4 5 6 7", 0);
    row("a range only adds", "o0 t0 t9 t5 e6", "0 5 6 9", 0);
    row("a range does not invert", "o0 t4 t2 e5", "2 3 4 5", 0);
    row("toggling out of the list changes nothing", "o5 t3 t-1 t10 e4", "3 4", 5);
    row("extending out of the list changes nothing", "o5 t3 e-1 e10 e4", "3 4", 5);
    row("clearing forgets the anchor", "o5 t2 c e4", "4 5", 5);
    row("opening a photo keeps the selection and the anchor", "t2 o6 n p e3", "2 3", 6);
    row("the active order again clears the selection and the anchor", "o5 t2 s e6", "5 6", 5);
    row("deleting the current photo keeps them, by index", "o5 t8 t2 d e3", "2 3 8", 5);
    row("deleting the selected photos clears them", "o5 t2 t3 x e6", "5 6", 5);
    row("another folder clears them", "o5 t2 f o5 e6", "5 6", 5);
    row("a folder that cannot be opened clears them", "o5 t2 m", "", -1);
  }

  void selects() {
    QFETCH(QString, steps);
    const PhotoFolder folder(numberedNames(10));
    FakePlatform platform;
    PhotoLibrary library(platform.services());
    const QHash<QChar, std::function<void(qint64)>> actions = {
        {u'o', [&](qint64 index) { library.openPhoto(index); }},
        {u't', [&](qint64 index) { library.toggleSelection(index); }},
        {u'e', [&](qint64 index) { library.extendSelection(index); }},
        {u'c', [&](qint64) { library.clearSelection(); }},
        {u's', [&](qint64) { library.setSortOrder(library.sortOrder()); }},
        {u'n', [&](qint64) { library.showNext(); }},
        {u'p', [&](qint64) { library.showPrevious(); }},
        {u'd', [&](qint64) { library.deleteCurrentPhoto(); }},
        {u'x', [&](qint64) { library.deleteSelectedPhotos(); }},
        {u'f', [&](qint64) { library.openFolder(folder.url()); }},
        {u'm', [&](qint64) { library.openFolder(folder.url(QStringLiteral("missing"))); }},
    };
    library.openFolder(folder.url());
    for (const QString& step : steps.split(u' ')) actions[step.front()](step.mid(1).toLongLong());
    QStringList selected;
    for (qint64 index = -1; index <= 10; ++index) {
      if (library.selectedIndices().contains(index)) selected.append(QString::number(index));
    }
    QTEST(selected.join(u' '), "selected");
    QTEST(library.currentIndex(), "current");
  }
};

QTEST_GUILESS_MAIN(PhotoLibrarySelectionTest)
#include "PhotoLibrarySelectionTest.moc"
