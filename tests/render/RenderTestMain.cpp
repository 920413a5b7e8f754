#include <QGuiApplication>

#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char* argv[])
{
    std::setlocale(LC_ALL, "C");
    // Pictures are drawn offscreen; listing the tests at build time has no display either.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
