// The catalogue's completeness and conventions, language detection and
// persistence, and the byte and percent formatters.

#include "TestMain.h"
#include "MemoryStore.h"
#include "localization/Catalogue.h"
#include "localization/LocalizationManager.h"
#include "localization/TextFormat.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <limits>
#include <thread>

using namespace tw;

namespace {
QStringList placeholders(const QString& text)
{
    QStringList found;
    static const QRegularExpression pattern(QStringLiteral("%[@d]"));
    for (auto it = pattern.globalMatch(text); it.hasNext();)
        found << it.next().captured();
    return found;
}

// Each language's own quotation marks, and the ones it must not use.
struct Quotes {
    QChar open, close;
    QString foreign;
};
Quotes quotesOf(Language language)
{
    switch (language) {
    case Language::english:
        return {QChar(0x201C), QChar(0x201D), QStringLiteral("«»„「」\"")};
    case Language::russian:
        return {QChar(0x00AB), QChar(0x00BB), QStringLiteral("“”„「」\"")};
    case Language::german:
        return {QChar(0x201E), QChar(0x201C), QStringLiteral("”«»「」\"")};
    case Language::chinese:
        return {QChar(0x300C), QChar(0x300D), QStringLiteral("“”«»„\"")};
    }
    return {};
}

const QString kKey = QString::fromLatin1(LocalizationManager::kSettingsKey);
const char* const kDuplicateChild = "TIDEWICK_DUPLICATE_KEY_CHILD";

// Runs this test program again with `arguments` and the variable `flag` set,
// and returns its wait status and everything it wrote. posix_spawn rather
// than QProcess: the thread sanitizer cannot follow Qt's way of starting a
// child, and stops the next thread this program starts.
std::pair<int, QString> runSelf(const QList<QByteArray>& arguments, const char* flag)
{
    int pipe[2];
    if (::pipe(pipe) != 0)
        return {-1, QStringLiteral("no pipe")};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], STDERR_FILENO);
    posix_spawn_file_actions_addclose(&actions, pipe[0]);
    QByteArray program = QCoreApplication::applicationFilePath().toLocal8Bit();
    std::vector<char*> argv{program.data()};
    for (const QByteArray& argument : arguments)
        argv.push_back(const_cast<char*>(argument.constData()));
    argv.push_back(nullptr);
    // The child inherits the flag; this process has no use for it.
    qputenv(flag, "1");
    pid_t pid = -1;
    const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    qunsetenv(flag);
    posix_spawn_file_actions_destroy(&actions);
    ::close(pipe[1]);
    QByteArray output;
    char buffer[4096];
    for (ssize_t n; (n = ::read(pipe[0], buffer, sizeof buffer)) > 0;)
        output.append(buffer, n);
    ::close(pipe[0]);
    int status = -1;
    if (spawned != 0 || ::waitpid(pid, &status, 0) != pid)
        return {-1, QStringLiteral("could not run the child")};
    return {status, QString::fromUtf8(output)};
}
} // namespace

class LocalizationTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // shared() reads QSettings: never the user's own.
        QStandardPaths::setTestModeEnabled(true);
    }

    void everyTableHoldsEveryKeyInOrder()
    {
        const catalogue::Table& english = catalogue::english();
        for (TextPlatform platform : allTextPlatforms)
            for (Language language : allLanguages) {
                const catalogue::Table& table = catalogue::source(language);
                const auto& map = catalogue::table(platform, language);
                QCOMPARE(map.size(), qsizetype(catalogue::kKeyCount)); // no key twice, no stray variant
                for (std::size_t i = 0; i < catalogue::kKeyCount; ++i) {
                    const QString key = QString::fromUtf8(english[i].key);
                    QCOMPARE(QString::fromUtf8(table[i].key), key);
                    const QString text = LocalizationManager::lookup(platform, language, key);
                    QVERIFY2(!text.trimmed().isEmpty(), qPrintable(key));
                    QVERIFY2(text != key, qPrintable(key));
                }
            }
    }

    void conventionsOfEachLanguage()
    {
        const QString name = QStringLiteral("Tidewick");
        std::vector<std::pair<TextPlatform, Language>> tables;
        for (TextPlatform platform : allTextPlatforms)
            for (Language language : allLanguages)
                tables.emplace_back(platform, language);
        for (const catalogue::Entry& entry : catalogue::english()) {
            const QString key = QString::fromUtf8(entry.key);
            const QString english = QString::fromUtf8(entry.text);
            for (const auto& [platform, language] : tables) {
                const QString text = LocalizationManager::lookup(platform, language, key);
                const QString where = languageCode(language) + QLatin1Char(' ') + key;
                // The same placeholders, in the same order.
                QVERIFY2(placeholders(text) == placeholders(english), qPrintable(where));
                // The product name stands as it is wherever English names it.
                QCOMPARE(text.count(name), english.count(name));
                // One ellipsis character, never three dots.
                QVERIFY2(!text.contains(QStringLiteral("...")), qPrintable(where));
                QCOMPARE(text.count(QChar(0x2026)), english.count(QChar(0x2026)));
                // Sentences keep their full stop, labels stay without one.
                const bool sentence = english.endsWith(QLatin1Char('.'));
                const bool stops = text.endsWith(QLatin1Char('.')) || text.endsWith(QChar(0x3002));
                if (!english.contains(QLatin1Char('\n')))
                    QVERIFY2(sentence == stops, qPrintable(where));
                // Each language's own quotation marks, in pairs, and no others.
                const Quotes quotes = quotesOf(language);
                QVERIFY2(text.count(quotes.open) == text.count(quotes.close), qPrintable(where));
                QVERIFY2(text.count(quotes.open) == english.count(QChar(0x201C)) || language != Language::english,
                         qPrintable(where));
                for (QChar foreign : quotes.foreign)
                    QVERIFY2(!text.contains(foreign), qPrintable(where + QStringLiteral(": ") + foreign));
                if (language == Language::chinese) {
                    // Chinese sentences close with the full-width full stop.
                    if (sentence)
                        QVERIFY2(text.endsWith(QChar(0x3002)), qPrintable(where));
                    for (QChar halfWidth : {QLatin1Char(','), QLatin1Char(':'), QLatin1Char('?'), QLatin1Char('(')}) {
                        // Half-width punctuation only inside Latin fragments (paths, "⌘R", addresses,
                        // the wildcards "*" and "?" as they are typed).
                        if (text.contains(halfWidth) && !english.contains(QStringLiteral("(⌘R)"))
                            && !text.contains(QStringLiteral("://")) && !(halfWidth == u'?' && text.contains(u'*')))
                            QVERIFY2(false, qPrintable(where));
                    }
                }
            }
        }
        for (const auto& [language, key, text] :
             {std::tuple{Language::chinese, "fda.step.open", "点击「打开设置」"},
              {Language::german, "fda.step.open", "Auf „Einstellungen öffnen“ klicken"},
              {Language::russian, "welcome.scanHome", "Сканировать дом. папку"},
              {Language::german, "snapshots.result.freed", "%@ freigegeben."}})
            QCOMPARE(LocalizationManager::lookup(TextPlatform::macOS, language, QString::fromUtf8(key)), QString::fromUtf8(text));
        QCOMPARE(placeholders(LocalizationManager::lookup(TextPlatform::macOS, Language::english, QStringLiteral("trash.summary"))),
                 (QStringList{QStringLiteral("%d"), QStringLiteral("%d"), QStringLiteral("%@")}));
        // The fixed web address of the product.
        QVERIFY(LocalizationManager::lookup(TextPlatform::macOS, Language::english, QStringLiteral("appstore.limited.body"))
                    .contains(QStringLiteral("https://tidewick.app for a complete picture.")));
    }

    void eachPlatformSpeaksOfItsOwnParts_data()
    {
        QTest::addColumn<TextPlatform>("platform");
        QTest::addColumn<Language>("language");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        const auto mac = TextPlatform::macOS;
        const auto desktop = TextPlatform::freedesktop;
        QTest::newRow("mac scan") << mac << Language::english << "welcome.scanMac" << "Scan entire Mac";
        QTest::newRow("mac title") << mac << Language::english << "welcome.title" << "Find and free up space on your Mac";
        QTest::newRow("mac reveal de") << mac << Language::german << "menu.revealInFinder" << "Im Finder zeigen";
        QTest::newRow("mac trash ru") << mac << Language::russian << "delete.bodyFile" << "Файл будет перемещён в корзину Finder.";
        QTest::newRow("desktop scan") << desktop << Language::english << "welcome.scanMac" << "Scan entire computer";
        QTest::newRow("desktop title") << desktop << Language::english << "welcome.title" << "Find and free up space on your computer";
        QTest::newRow("desktop reveal") << desktop << Language::english << "menu.revealInFinder" << "Show in Files";
        QTest::newRow("desktop trash") << desktop << Language::english << "delete.bodyDir" << "The folder and all of its contents will be moved to the Trash.";
        QTest::newRow("desktop scan zh") << desktop << Language::chinese << "welcome.scanMac" << "扫描整台电脑";
        QTest::newRow("desktop shared") << desktop << Language::german << "mode.apps" << "Apps";
    }
    void eachPlatformSpeaksOfItsOwnParts()
    {
        QFETCH(TextPlatform, platform);
        QFETCH(Language, language);
        QFETCH(QString, key);
        QFETCH(QString, expected);
        test::MemoryStore store;
        LocalizationManager manager(store, {languageCode(language)}, platform);
        QCOMPARE(manager.string(key), expected);
        QCOMPARE(manager.strings().value(key).toString(), expected);
        QCOMPARE(manager.text(language, key), expected);
    }

    void otherDesktopsNeverHearOfTheMacOrTheFinder()
    {
        static const QRegularExpression mac(QStringLiteral("(?<![A-Za-z])Mac(?![A-Za-z])|Finder|访达"));
        for (Language language : allLanguages) {
            const catalogue::Table& own = catalogue::source(language);
            for (const catalogue::Entry& entry : own) {
                const QString key = QString::fromUtf8(entry.key);
                const QString text = LocalizationManager::lookup(TextPlatform::freedesktop, language, key);
                QVERIFY2(!mac.match(text).hasMatch(), qPrintable(languageCode(language) + u' ' + key + u' ' + text));
                // The Mac keeps every word of its own table.
                QCOMPARE(LocalizationManager::lookup(TextPlatform::macOS, language, key), QString::fromUtf8(entry.text));
            }
        }
    }

    void aDuplicateKeyStopsTheBuild()
    {
        if (qEnvironmentVariableIsSet(kDuplicateChild)) {
            // In the child: this must not return.
            const catalogue::Entry entries[] = {{"a.b", "one"}, {"c.d", "two"}, {"a.b", "three"}};
            const auto map = catalogue::buildLookup(entries, "test");
            qInfo("built %d entries", int(map.size()));
            return;
        }
        const catalogue::Entry distinct[] = {{"a.b", "one"}, {"c.d", "two"}};
        QCOMPARE(catalogue::buildLookup(distinct, "test").value(QStringLiteral("c.d")), QStringLiteral("two"));

        const auto [status, output] = runSelf({test::currentTestName(), "aDuplicateKeyStopsTheBuild"}, kDuplicateChild);
        QVERIFY2(status != -1, qPrintable(output));
        QVERIFY2(!WIFEXITED(status) || WEXITSTATUS(status) != 0, qPrintable(output));
        QVERIFY2(output.contains(QStringLiteral("the test text table holds the key \"a.b\" twice")),
                 qPrintable(output));
        QVERIFY2(!output.contains(QStringLiteral("built")), qPrintable(output));
    }

    void lookupFallsBackToTheBareKey()
    {
        test::MemoryStore store;
        store.values[kKey] = QStringLiteral("ru");
        LocalizationManager manager(store, {}, TextPlatform::macOS);
        QCOMPARE(manager.string(QStringLiteral("no.such.key")), QStringLiteral("no.such.key"));
        QCOMPARE(manager.string(QStringLiteral("mode.apps")), QStringLiteral("Приложения"));
        QCOMPARE(manager.strings().size(), qsizetype(catalogue::kKeyCount));
        // The map QML binds to follows the language, text for text.
        manager.setCurrent(Language::german);
        const QVariantMap german = manager.strings();
        for (auto it = german.cbegin(); it != german.cend(); ++it)
            QCOMPARE(it.value().toString(), LocalizationManager::lookup(TextPlatform::macOS, Language::german, it.key()));
    }

    void currentIsReadableWhileTheLanguageChanges()
    {
        test::MemoryStore store;
        LocalizationManager manager(store, {}, TextPlatform::macOS);
        QStringList folderTexts;
        for (Language language : allLanguages)
            folderTexts << LocalizationManager::lookup(TextPlatform::macOS, language, QStringLiteral("mode.folder"));

        std::atomic<bool> stop = false;
        std::atomic<int> wrong = 0;
        std::vector<std::thread> readers;
        for (int i = 0; i < 2; ++i)
            readers.emplace_back([&] {
                while (!stop.load()) {
                    const Language seen = manager.current();
                    if (LocalizationManager::lookup(TextPlatform::macOS, seen, QStringLiteral("mode.folder")) != folderTexts[int(seen)]
                        || !folderTexts.contains(manager.string(QStringLiteral("mode.folder"))))
                        ++wrong;
                }
            });
        for (int round = 0; round < 2000; ++round)
            manager.setCurrent(allLanguages[std::size_t(round) % allLanguages.size()]);
        stop = true;
        for (std::thread& reader : readers)
            reader.join();
        QCOMPARE(wrong.load(), 0);
        QCOMPARE(store.writes, 2000 - 1); // the first set is English again, which writes nothing
    }

    void theSharedInstanceLivesOnTheApplicationThread()
    {
        LocalizationManager* made = nullptr;
        std::thread([&] { made = &LocalizationManager::shared(); }).join();
        QCOMPARE(made, &LocalizationManager::shared());
        QCOMPARE(made->thread(), QCoreApplication::instance()->thread());
    }

    void detection_data()
    {
        QTest::addColumn<QStringList>("preferred");
        QTest::addColumn<Language>("expected");
        QTest::newRow("empty") << QStringList{} << Language::english;
        QTest::newRow("first supported wins") << QStringList{"fr-FR", "de-DE", "en-US"} << Language::german;
        QTest::newRow("english first") << QStringList{"en-GB", "ru-RU"} << Language::english;
        QTest::newRow("nothing supported") << QStringList{"pt-BR", "fr-FR"} << Language::english;
        QTest::newRow("simplified") << QStringList{"zh-Hans-CN"} << Language::chinese;
        QTest::newRow("traditional too") << QStringList{"zh-Hant-TW"} << Language::chinese;
        QTest::newRow("lower-cased") << QStringList{"EN-us", "de"} << Language::english;
        QTest::newRow("bare code") << QStringList{"ru"} << Language::russian;
        QTest::newRow("empty entry") << QStringList{"", "de-AT"} << Language::german;
        QTest::newRow("underscore is not a dash") << QStringList{"de_DE", "ru"} << Language::russian;
    }
    void detection()
    {
        QFETCH(QStringList, preferred);
        QFETCH(Language, expected);
        QCOMPARE(detectLanguage(preferred), expected);
        test::MemoryStore store;
        LocalizationManager manager(store, preferred, TextPlatform::macOS);
        QCOMPARE(manager.current(), expected);
        QCOMPARE(store.writes, 0); // the detected language is not written back
    }

    void persistence()
    {
        test::MemoryStore store;
        store.values[kKey] = QStringLiteral("ru");
        LocalizationManager stored(store, {QStringLiteral("de-DE")}, TextPlatform::macOS);
        QCOMPARE(stored.current(), Language::russian);

        // A value that names no language is ignored, and stays until a change.
        for (const char* bad : {"fr", "EN", ""}) {
            store.values[kKey] = QLatin1String(bad);
            LocalizationManager manager(store, {QStringLiteral("de-DE")}, TextPlatform::macOS);
            QCOMPARE(manager.current(), Language::german);
            QCOMPARE(store.values[kKey], QLatin1String(bad));
        }

        LocalizationManager manager(store, {QStringLiteral("de-DE")}, TextPlatform::macOS);
        QSignalSpy changes(&manager, &LocalizationManager::currentChanged);
        const int before = store.writes;
        manager.setCurrent(Language::german); // the same language: nothing written
        QCOMPARE(store.writes, before);
        QCOMPARE(changes.count(), 0);
        manager.setCurrent(Language::chinese);
        QCOMPARE(store.writes, before + 1);
        QCOMPARE(store.values[kKey], QStringLiteral("zh"));
        QCOMPARE(changes.count(), 1);
        QCOMPARE(manager.string(QStringLiteral("mode.folder")), QStringLiteral("磁盘分析"));
    }

    void languageFacts()
    {
        QCOMPARE(QStringList({languageNativeName(Language::russian), languageNativeName(Language::chinese),
                              languageDateLocale(Language::chinese)}),
                 QStringList({QStringLiteral("Русский"), QStringLiteral("中文"), QStringLiteral("zh_Hans")}));
        QCOMPARE(languageFromCode(u"de"), std::optional(Language::german));
        QVERIFY(!languageFromCode(u"DE"));
    }

    void formatBytes_data()
    {
        QTest::addColumn<qint64>("count");
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("german");
        QTest::newRow("zero") << qint64(0) << "Zero KB" << "Zero KB";
        QTest::newRow("negative") << qint64(-5000) << "Zero KB" << "Zero KB";
        QTest::newRow("one byte") << qint64(1) << "1 KB" << "1 KB";
        QTest::newRow("999 bytes") << qint64(999) << "1 KB" << "1 KB";
        QTest::newRow("1000 bytes") << qint64(1000) << "1 KB" << "1 KB";
        QTest::newRow("1499 bytes") << qint64(1499) << "1 KB" << "1 KB";
        QTest::newRow("1500 bytes") << qint64(1500) << "2 KB" << "2 KB";
        QTest::newRow("999 KB") << qint64(999'400) << "999 KB" << "999 KB";
        QTest::newRow("rounds up to the next unit") << qint64(999'999) << "1 MB" << "1 MB";
        QTest::newRow("one MB") << qint64(1'000'000) << "1 MB" << "1 MB";
        QTest::newRow("1.2 MB") << qint64(1'234'567) << "1.2 MB" << "1,2 MB";
        QTest::newRow("999.9 MB") << qint64(999'949'999) << "999.9 MB" << "999,9 MB";
        QTest::newRow("MB rounds up to GB") << qint64(999'950'000) << "1 GB" << "1 GB";
        QTest::newRow("1.5 GB") << qint64(1'500'000'000) << "1.5 GB" << "1,5 GB";
        QTest::newRow("trailing zero dropped") << qint64(2'100'000'000) << "2.1 GB" << "2,1 GB";
        QTest::newRow("two decimals") << qint64(2'345'000'000) << "2.35 GB" << "2,35 GB";
        QTest::newRow("12.34 TB") << qint64(12'340'000'000'000) << "12.34 TB" << "12,34 TB";
        QTest::newRow("beyond TB") << qint64(1'234'000'000'000'000) << "1,234 TB" << "1.234 TB";
        QTest::newRow("largest count") << std::numeric_limits<qint64>::max() << "9,223,372.04 TB"
                                       << "9.223.372,04 TB";
    }
    void formatBytes()
    {
        QFETCH(qint64, count);
        QFETCH(QString, english);
        QFETCH(QString, german);
        QCOMPARE(tw::formatBytes(count, QLocale(QLocale::English, QLocale::UnitedStates)), english);
        QCOMPARE(tw::formatBytes(count, QLocale(QLocale::German, QLocale::Germany)), german);
    }

    void percentText()
    {
        for (const auto& [part, whole, text] : {std::tuple{37.0, 100.0, "37%"}, {4.26, 100.0, "4.3%"}, {0.123, 100.0, "0.12%"},
                                                {10.0, 100.0, "10%"}, {1.0, 100.0, "1.0%"}, {5.0, 0.0, "0%"}, {5.0, 0.5, "0%"}})
            QCOMPARE(tw::percentText(part, whole), QString::fromLatin1(text));
    }
};

TIDEWICK_TEST_MAIN(LocalizationTest)
#include "tst_localization.moc"
