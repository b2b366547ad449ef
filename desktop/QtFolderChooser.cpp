#include "QtFolderChooser.h"

#include <QFileDialog>
#include <QSettings>

#include "DialogWindow.h"
#include "WidgetPalette.h"

namespace lumagrid {

namespace {

// The toolkit's dialog keeps the folders that it has shown in a file of all the toolkit's programs, and offers no way
// not to. Where no file can be made it keeps nothing. Our own preferences name their file, and stay.
void disableHistory() {
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
}

}  // namespace

std::optional<FileUrl> QtFolderChooser::chooseFolder(const QString& title, const QString& prompt) {
  m_palette.apply();
  disableHistory();
  QFileDialog dialog;
  dialog.setWindowTitle(title);
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOptions(QFileDialog::ShowDirsOnly | QFileDialog::ReadOnly);
  dialog.setLabelText(QFileDialog::Accept, prompt);
  setTransientParent(dialog, activeWindow());
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  const QStringList chosen = dialog.selectedFiles();
  if (chosen.isEmpty()) return std::nullopt;
  return FileUrl::fromPath(chosen.first());
}

}  // namespace lumagrid
