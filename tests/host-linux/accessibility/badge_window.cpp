// A window with a badge: a title, some controls, and the text that it was started with.
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

int main(int argumentCount, char** arguments) {
    QApplication application(argumentCount, arguments);
    QGroupBox window("Now playing");
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(new QPushButton("Pause"));
    layout->addWidget(new QLabel(argumentCount > 1 ? arguments[1] : "HI-RES"));
    window.show();
    return QApplication::exec();
}
