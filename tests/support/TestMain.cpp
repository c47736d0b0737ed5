#include "TestEnvironment.h"

#include <QDir>

#include <gtest/gtest.h>

// Suites whose tests open windows need a QApplication (on the display run-with-xvfb.sh gives
// them); those that draw text a QGuiApplication without a display; the others make do with
// the core.
#ifdef WENDREL_WIDGET_TESTS
#include <QApplication>
using TestApplication = QApplication;
#elif defined(WENDREL_FONT_TESTS)
#include <QGuiApplication>
using TestApplication = QGuiApplication;
#else
#include <QCoreApplication>
using TestApplication = QCoreApplication;
#endif

// Test executables share this main: a private environment first, then the Qt application
// that the job runner's event delivery needs, then the tests.
int main(int argc, char** argv)
{
    wendrel::test::isolateEnvironment();
#ifdef WENDREL_FONT_TESTS
    qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
    TestApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    const int status = RUN_ALL_TESTS();
    QDir(wendrel::test::privateRoot()).removeRecursively();
    return status;
}
