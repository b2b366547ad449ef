#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

namespace {

constexpr char kNames[] =
#define LUMAGRID_FORMAT(identifier, names, ...) names ", "
#include "PictureFormats.def"
    ;
constexpr char kExtensions[] =
#define LUMAGRID_FORMAT(identifier, names, extensions, ...) extensions " "
#include "PictureFormats.def"
    ;
constexpr char kMimeTypes[] =
#define LUMAGRID_FORMAT(identifier, names, extensions, mimeTypes, ...) mimeTypes " "
#include "PictureFormats.def"
    ;

QString contents(const char* path) {
  QFile file(QString::fromUtf8(path));
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QSet<QString> words(const QString& text, const QString& pattern) {
  QSet<QString> found;
  for (auto match = QRegularExpression(pattern).globalMatch(text); match.hasNext();) {
    found.insert(match.next().captured());
  }
  return found;
}

}  // namespace

// What is said about formats outside of the sources, against the table of formats.
class PictureFormatsTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void theReadmeListsThem() {
    const QString readme = contents(README);
    const QString section =
        readme.mid(readme.indexOf(QStringLiteral("## Formats"))).section(QStringLiteral(". "), 0, 0);
    const QString list = section.section(QStringLiteral("\n\n"), 1);
    const QString name = QStringLiteral("\\b[A-Z][A-Za-z]+\\b");
    QCOMPARE(words(list.section(QLatin1Char(':'), 0, 0), name), words(QString::fromUtf8(kNames), name));
    const QSet<QString> quoted = words(list, QStringLiteral("(?<=`)[a-z]+(?=`)"));
    QCOMPARE(quoted, words(QString::fromUtf8(kExtensions), QStringLiteral("\\w+")));
  }

  void theDesktopIsToldOfThem() {
    const QString entry = contents(PACKAGING "/org.lumagrid.lumagrid.desktop");
    const QString types = entry.section(QStringLiteral("MimeType="), 1).section(QLatin1Char('\n'), 0, 0);
    const QSet<QString> folders = {QStringLiteral("inode/directory")};
    QCOMPARE(words(types, QStringLiteral("[^;]+")),
             words(QString::fromUtf8(kMimeTypes), QStringLiteral("\\S+")) + folders);
    const QString opens =
        contents(PACKAGING "/org.lumagrid.lumagrid.metainfo.xml").section(QStringLiteral("<li>Opens "), 1);
    QCOMPARE(opens.section(QStringLiteral("</li>"), 0, 0) + QStringLiteral(", "), QString::fromUtf8(kNames));
  }
};

QTEST_APPLESS_MAIN(PictureFormatsTest)
#include "PictureFormatsTest.moc"
