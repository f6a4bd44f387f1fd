#include <gtest/gtest.h>

#include <QApplication>

/// The toolkit draws on nothing: what is tested has connections of its own.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
