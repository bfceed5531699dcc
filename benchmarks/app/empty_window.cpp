// The least that a program with this toolkit can show: what the window's start and memory are measured against.

#include <QApplication>
#include <QWidget>

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    QWidget window;
    window.resize(480, 270);
    window.show();
    return QApplication::exec();
}
