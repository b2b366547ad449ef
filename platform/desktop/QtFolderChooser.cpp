#include "QtFolderChooser.h"

#include <QFileDialog>

#include "DialogWindow.h"
#include "WidgetPalette.h"

namespace lumagrid {

std::optional<FileUrl> QtFolderChooser::chooseFolder(const QString& title, const QString& prompt) {
  m_palette.apply();
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
