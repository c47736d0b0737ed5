#include "TestEnvironment.h"

#include <QApplication>
#include <QDir>

#include <gtest/gtest.h>

// Test executables with windows share this main: a private environment first, then a
// QApplication on the display that run-with-xvfb.sh provides, then the tests.
int main(int argc, char** argv)
{
    wendrel::test::isolateEnvironment();
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    const int status = RUN_ALL_TESTS();
    QDir(wendrel::test::privateRoot()).removeRecursively();
    return status;
}
