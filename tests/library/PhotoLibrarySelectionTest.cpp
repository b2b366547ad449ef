#include <QTest>

#include "FakePlatform.h"
#include "PhotoFolder.h"

using namespace lumagrid;

class PhotoLibrarySelectionTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void selects_data();
  void selects();
};

void PhotoLibrarySelectionTest::selects_data() {
  QTest::addColumn<QString>(
      "steps");  // o: open, t: toggle, e: extend, each with an index; c: clear; s: sort; d: delete
  QTest::addColumn<QString>("selected");
  QTest::addColumn<qint64>("current");
  const auto row = [](const char* name, const char* steps, const char* selected, int current) {
    QTest::newRow(name) << QString::fromLatin1(steps) << QString::fromLatin1(selected) << qint64{current};
  };
  row("a toggled photo is selected", "o5 t3", "3", 5);
  row("toggled twice, it is not", "o5 t3 t3", "", 5);
  row("what was taken out stays the anchor", "o5 t3 t3 e5", "3 4 5", 5);
  row("without an anchor from the current photo", "o6 e2", "2 3 4 5 6", 6);
  row("a second range starts where the first ended", "o0 t2 e5 e8", "2 3 4 5 6 7 8", 0);
  row("a range downwards", "o0 t7 e3 e2", "2 3 4 5 6 7", 0);
  row("a range of one", "o4 e4", "4", 4);
  row("a range only adds", "o0 t0 t9 t5 e6", "0 5 6 9", 0);
  row("a range does not invert", "o0 t4 t2 e5", "2 3 4 5", 0);
  row("toggling out of the list changes nothing", "o5 t3 t-1 t10 e4", "3 4", 5);
  row("extending out of the list changes nothing", "o5 t3 e-1 e10 e4", "3 4", 5);
  row("clearing forgets the anchor", "o5 t2 c e4", "4 5", 5);
  row("opening a photo keeps the selection and the anchor", "t2 o6 e3", "2 3", 6);
  row("so does stepping", "o0 t2 n p e3", "2 3", 0);
  row("the active order again clears the selection and the anchor", "o5 t2 s e6", "5 6", 5);
  row("deleting the current photo keeps them, by index", "o5 t8 t2 d e3", "2 3 8", 5);
  row("deleting the selected photos clears them", "o5 t2 t3 x e6", "5 6", 5);
  row("another folder clears them", "o5 t2 f", "", -2);
  row("a folder that cannot be opened clears them", "o5 t2 m", "", -1);
}

void PhotoLibrarySelectionTest::selects() {
  QFETCH(QString, steps);
  QFETCH(QString, selected);
  QFETCH(qint64, current);
  const PhotoFolder folder(numberedNames(10));
  FakePlatform platform;
  PhotoLibrary library(platform.services());
  library.openFolder(folder.url());
  for (const QString& step : steps.split(u' ')) {
    const qint64 index = step.mid(1).toLongLong();
    switch (step.at(0).toLatin1()) {
      case 'o':
        library.openPhoto(index);
        break;
      case 't':
        library.toggleSelection(index);
        break;
      case 'e':
        library.extendSelection(index);
        break;
      case 'c':
        library.clearSelection();
        break;
      case 's':
        library.setSortOrder(library.sortOrder());
        break;
      case 'n':
        library.showNext();
        break;
      case 'p':
        library.showPrevious();
        break;
      case 'd':
        library.deleteCurrentPhoto();
        break;
      case 'x':
        library.deleteSelectedPhotos();
        break;
      case 'f':
        library.openFolder(folder.url());
        break;
      case 'm':
        library.openFolder(folder.url(QStringLiteral("missing")));
        break;
      default:
        QFAIL("unknown step");
    }
  }
  QList<qint64> indices(library.selectedIndices().begin(), library.selectedIndices().end());
  std::sort(indices.begin(), indices.end());
  QStringList texts;
  for (const qint64 index : indices) texts.append(QString::number(index));
  QCOMPARE(texts.join(u' '), selected);
  constexpr qint64 kFirstListed = -2;
  if (current == kFirstListed) current = numberedNames(10).indexOf(folder.listed().first());
  QCOMPARE(library.currentIndex(), current);
}

QTEST_GUILESS_MAIN(PhotoLibrarySelectionTest)
#include "PhotoLibrarySelectionTest.moc"
