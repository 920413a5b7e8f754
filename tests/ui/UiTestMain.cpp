#include "UiTests.h"

#include <QApplication>
#include <QTest>

#include <cstdio>

namespace kilnova::test {
std::map<std::string, std::function<std::unique_ptr<QObject>()>>& uiTestRegistry()
{
    static std::map<std::string, std::function<std::unique_ptr<QObject>()>> registry;
    return registry;
}
} // namespace kilnova::test

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("KilnovaTests"));
    QApplication::setApplicationName(QStringLiteral("KilnovaUiTests"));
    QStringList args = app.arguments();
    const QString only = args.size() > 1 && !args[1].startsWith('-') ? args.takeAt(1) : QString();
    int failures = 0;
    bool ran = false;
    for (auto& [name, make] : kilnova::test::uiTestRegistry()) {
        if (!only.isEmpty() && only != QString::fromStdString(name))
            continue;
        ran = true;
        std::unique_ptr<QObject> test = make();
        failures += QTest::qExec(test.get(), args);
    }
    if (!ran) {
        std::fprintf(stderr, "no widget test class named %s\n", qPrintable(only));
        return 2;
    }
    return failures == 0 ? 0 : 1;
}
