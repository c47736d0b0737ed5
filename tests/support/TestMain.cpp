#include "TestEnvironment.h"

#include <QCoreApplication>
#include <QDir>

#include <gtest/gtest.h>

// Test executables share this main: a private environment first, then the Qt application
// that the job runner's event delivery needs, then the tests.
int main(int argc, char** argv)
{
    wendrel::test::isolateEnvironment();
    QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    const int status = RUN_ALL_TESTS();
    QDir(wendrel::test::privateRoot()).removeRecursively();
    return status;
}
