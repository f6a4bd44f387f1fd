// render_panel <folder> [<scale>]: draws every state of the panel into <folder>/<state>@<scale>x.png, as the
// picture tests see them. For looking, and for making their reference images anew.

#include <QApplication>
#include <QDir>
#include <cstdio>
#include <cstdlib>

#include "platform/linux/words/linux_words.h"
#include "tests/host-linux/panel/panel_picture.h"
#include "tests/support/panel_states.h"

int main(int argc, char** argv) {
    using namespace purlock;
    if (argc < 2) {
        std::fputs("usage: render_panel <folder> [<scale>]\n", stderr);
        return EXIT_FAILURE;
    }
    const double scale = argc > 2 ? std::atof(argv[2]) : 1;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    test::usePictureFont();
    for (const auto& state : test::panelStates(host_linux::linuxWords())) {
        const QString file =
            QDir(argv[1]).filePath(QString::fromStdString(test::pictureName(state.name, scale)));
        if (!test::panelPicture(state.view, scale).save(file)) return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
