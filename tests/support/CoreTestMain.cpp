#include <QCoreApplication>

#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char* argv[])
{
    // Reports and number formatting must not depend on the machine's locale.
    std::setlocale(LC_ALL, "C");
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
