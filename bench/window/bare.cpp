// The least that a program with this toolkit shows: one window with one rectangle. What the window's start is measured
// by.
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

int main(int argc, char* argv[]) {
  QGuiApplication application(argc, argv);
  QQmlEngine engine;
  QQmlComponent component(&engine);
  component.setData("import QtQuick\nRectangle { color: 'beige' }", QUrl());
  QQuickWindow window;
  window.resize(1100, 786);
  auto* rectangle = qobject_cast<QQuickItem*>(component.create());
  if (!rectangle) return EXIT_FAILURE;
  rectangle->setParent(&window);
  rectangle->setParentItem(window.contentItem());
  rectangle->setSize(window.size());
  window.show();
  return QGuiApplication::exec();
}
