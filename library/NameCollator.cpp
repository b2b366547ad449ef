#include "NameCollator.h"

#include <unicode/coll.h>
#include <unicode/ustring.h>

#include <QVarLengthArray>
#include <QtGlobal>

namespace lumagrid {

namespace {

constexpr UChar32 kReplacementCharacter = 0xFFFD;

// Read from the environment: the C library forgets a locale that is not generated on this machine, ICU has its own
// data.
icu::Locale userLocale() {
  for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
    const QByteArray value = qgetenv(variable);
    if (value.isEmpty()) continue;
    const QByteArray name = value.left(value.indexOf('.'));  // without the encoding
    if (name == "C" || name == "POSIX") return icu::Locale::getRoot();
    return icu::Locale::createCanonical(value.constData());
  }
  return icu::Locale::getRoot();
}

std::unique_ptr<icu::Collator> makeCollator() {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(userLocale(), status));
  if (U_FAILURE(status)) return nullptr;
  collator->setStrength(icu::Collator::TERTIARY);
  collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
  return U_SUCCESS(status) ? std::move(collator) : nullptr;
}

}  // namespace

struct NameCollator::Data {
  std::unique_ptr<icu::Collator> collator = makeCollator();
};

NameCollator::NameCollator() : m_data(std::make_unique<Data>()) {}
NameCollator::~NameCollator() = default;

QByteArray NameCollator::sortKey(QByteArrayView name) const {
  if (!m_data->collator) return name.toByteArray();

  // A byte of UTF-8 never becomes more than one unit of UTF-16.
  QVarLengthArray<UChar, 256> text(name.size());
  int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8WithSub(text.data(), int32_t(text.size()), &length, name.data(), int32_t(name.size()),
                       kReplacementCharacter, nullptr, &status);

  QVarLengthArray<char, 1024> key(1024);
  const auto fill = [&] {
    return m_data->collator->getSortKey(text.constData(), length, reinterpret_cast<uint8_t*>(key.data()),
                                        int32_t(key.size()));
  };
  int32_t bytes = fill();
  if (bytes > key.size()) {
    key.resize(bytes);
    bytes = fill();
  }

  // The key ends with the only zero byte in it; what follows decides between names that collate as equal.
  QByteArray result;
  result.reserve(bytes + name.size());
  result.append(key.constData(), bytes);
  return result.append(name);
}

}  // namespace lumagrid
