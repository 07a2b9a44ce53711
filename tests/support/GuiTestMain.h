// main() for tests that create web views: Qt WebEngine needs shared OpenGL
// contexts, which must be requested before the application object exists.
#pragma once

#include <QApplication>
#include <QTest>

#define MELO_WEBENGINE_TEST_MAIN(TestClass)                          \
    int main(int argc, char* argv[])                                 \
    {                                                                \
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts); \
        QApplication app(argc, argv);                                \
        TestClass test;                                              \
        return QTest::qExec(&test, argc, argv);                      \
    }
