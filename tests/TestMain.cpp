// main() of the test programs: one process runs one test class, as it would
// with a program of its own, under the application object its kind needs.

#include "TestMain.h"

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#ifdef QT_GUI_LIB
#include <QGuiApplication>
#endif
#ifdef TIDEWICK_TEST_QML_PLUGIN
#include <QQmlExtensionPlugin>
Q_IMPORT_QML_PLUGIN(TidewickPlugin)
#endif

namespace {
std::map<std::string, tw::test::TestRunner>& registry()
{
    static std::map<std::string, tw::test::TestRunner> classes;
    return classes;
}
QByteArray g_current;
} // namespace

namespace tw::test {

bool registerTestClass(const char* file, TestRunner run)
{
    std::string name(file);
    name = name.substr(name.find_last_of('/') + 1);
    name = name.substr(0, name.find_last_of('.'));
    return registry().emplace(name, run).second;
}

QByteArray currentTestName()
{
    return g_current;
}

} // namespace tw::test

int main(int argc, char** argv)
{
    const auto found = argc > 1 ? registry().find(argv[1]) : registry().end();
    if (found == registry().end()) {
        std::fprintf(stderr, "usage: %s TEST [Qt Test arguments]\ntests:", argv[0]);
        for (const auto& entry : registry())
            std::fprintf(stderr, " %s", entry.first.c_str());
        std::fprintf(stderr, "\n");
        return 2;
    }
    g_current = argv[1];
    std::vector<char*> arguments{argv[0]};
    arguments.insert(arguments.end(), argv + 2, argv + argc);
    int count = int(arguments.size());
    arguments.push_back(nullptr);
#ifdef QT_GUI_LIB
    QGuiApplication app(count, arguments.data());
#else
    QCoreApplication app(count, arguments.data());
#endif
    app.setAttribute(Qt::AA_Use96Dpi, true);
    return found->second(count, arguments.data());
}
