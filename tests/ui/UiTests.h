#pragma once

#include <QObject>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace kilnova::test {

/// Each widget test class registers a factory under its name; the main runs the one named on the
/// command line (or all of them).
std::map<std::string, std::function<std::unique_ptr<QObject>()>>& uiTestRegistry();

template <typename T> struct RegisterUiTest {
    explicit RegisterUiTest(const char* name)
    {
        uiTestRegistry()[name] = [] {
            return std::make_unique<T>();
        };
    }
};

} // namespace kilnova::test
