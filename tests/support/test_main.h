#pragma once

#include <QObject>

#include <memory>

/// Runs the test object that `make` builds inside a QApplication with the off-screen platform
/// (unless QT_QPA_PLATFORM says otherwise), an application name of its own and a private home,
/// temporary folder and runtime folder, all removed afterwards. QUORVEL_TEST_SCALE, when it is set,
/// is how many pixels of the screen a widget's pixel has. Returns the exit code.
int runTest(int argc, char** argv, std::unique_ptr<QObject> (*make)());

/// The entry routine of a test program whose one test class is `TestClass`.
#define QUORVEL_TEST_MAIN(TestClass)                                                               \
    int main(int argc, char** argv)                                                                \
    {                                                                                              \
        return runTest(argc, argv, []() -> std::unique_ptr<QObject> {                              \
            return std::make_unique<TestClass>();                                                  \
        });                                                                                        \
    }
