#pragma once

// The test programs hold many test classes; the first argument names the
// one to run (the file's name, "tst_removal"), the rest go to Qt Test.

#include <QtTest>

namespace tw::test {

using TestRunner = int (*)(int argc, char** argv);
bool registerTestClass(const char* file, TestRunner run);
// The name this process was started with, for a test that starts itself again.
QByteArray currentTestName();

} // namespace tw::test

#define TIDEWICK_TEST_MAIN(TestObject)                                                      \
    namespace {                                                                             \
    const bool registered##TestObject =                                                     \
        tw::test::registerTestClass(__FILE__, [](int argc, char** argv) {                   \
            TestObject test;                                                                \
            QTEST_SET_MAIN_SOURCE_PATH                                                      \
            return QTest::qExec(&test, argc, argv);                                         \
        });                                                                                 \
    }
