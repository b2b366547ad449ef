#pragma once

#include <QString>

namespace lumagrid {

// A name from outside as text to show, on one line and in a sentence of ours, whatever it holds. Ordinary names stay
// letter for letter:
// - control characters, line breaks and controls of the writing direction become U+FFFD, as do bytes that are no text;
// - a name with characters that run from right to left is put between U+2068 and U+2069, which keep it from turning
//   what stands beside it.
[[nodiscard]] QString shownName(const QString& name);

// The same for a sentence or a menu, which have to fit on the screen: "…" stands for the middle of a name of more than
// 80 characters.
[[nodiscard]] QString shownNameInSentence(const QString& name);

}  // namespace lumagrid
