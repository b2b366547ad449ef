#include "ShownName.h"

#include <QList>
#include <QTextBoundaryFinder>
#include <algorithm>

namespace lumagrid {

namespace {

constexpr qsizetype kSentenceRoom = 80;

constexpr QChar kFirstStrongIsolate = u'\u2068';
constexpr QChar kPopIsolate = u'\u2069';

bool controlsDirection(QChar character) {
  return (character >= u'\u202A' && character <= u'\u202E') || (character >= u'\u2066' && character <= u'\u2069');
}

bool isInvisible(QChar character) {
  const QChar::Category category = character.category();
  return category == QChar::Other_Control || category == QChar::Separator_Line ||
         category == QChar::Separator_Paragraph || controlsDirection(character);
}

bool runsFromRightToLeft(char32_t character) {
  const QChar::Direction direction = QChar::direction(character);
  return direction == QChar::DirR || direction == QChar::DirAL || direction == QChar::DirAN;
}

QString isolated(const QString& text) {
  const QList<uint> characters = text.toUcs4();
  return std::any_of(characters.begin(), characters.end(), runsFromRightToLeft)
             ? kFirstStrongIsolate + text + kPopIsolate
             : text;
}

QString visible(QString name) {
  std::replace_if(name.begin(), name.end(), isInvisible, QChar(QChar::ReplacementCharacter));
  return name;
}

// Between characters as people see them, so that no accent is torn off.
QString withoutMiddle(const QString& name) {
  if (name.size() <= kSentenceRoom) return name;
  QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, name);
  constexpr qsizetype kHalf = (kSentenceRoom - 1) / 2;
  boundaries.setPosition(kHalf + 1);
  const qsizetype headEnd = boundaries.toPreviousBoundary();
  boundaries.setPosition(name.size() - kHalf - 1);
  const qsizetype tailBegin = boundaries.toNextBoundary();
  return name.first(headEnd) + u'\u2026' + name.sliced(tailBegin);
}

}  // namespace

QString shownName(const QString& name) {
  return isolated(visible(name));
}

QString shownNameInSentence(const QString& name) {
  return isolated(withoutMiddle(visible(name)));
}

}  // namespace lumagrid
