#include <gtest/gtest.h>
#include <QApplication>

// The window's tests run in a real QApplication; without a display they use
// Qt's offscreen platform, which draws the same widgets into memory.
int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
