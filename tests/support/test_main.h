#pragma once

#include <QObject>

#include <memory>

/// Enters a test class into the program's list, under the name of its source file without suffix.
struct RegisteredTest
{
    RegisteredTest(const char* file, std::unique_ptr<QObject> (*make)());
};

/// Enters the test class of this file.
#define QUORVEL_TEST_MAIN(TestClass)                                                               \
    static const RegisteredTest registered##TestClass(                                             \
        __FILE__, []() -> std::unique_ptr<QObject> { return std::make_unique<TestClass>(); });

/// The main routine of all test programs: `argv` names one of the classes entered and what Qt Test
/// shall do with it. The test runs inside a QApplication with the off-screen platform (unless
/// QT_QPA_PLATFORM or QUORVEL_TEST_PLATFORM says otherwise), an application name of its own and a
/// private home, temporary folder and runtime folder, all removed afterwards. QUORVEL_TEST_SCALE,
/// when it is set, is how many pixels of the screen a widget's pixel has. Returns the exit code.
int runTest(int argc, char** argv);
