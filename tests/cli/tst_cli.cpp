// tidewick-cli as a shell user meets it: exit codes and messages that tell
// the truth, names taken as the bytes they are, JSON that parses.

#include "TestMain.h"
#include "TestFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace tw::test;

namespace {

struct Run {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// Runs the command line with argv's raw bytes (QProcess would re-encode
// them). With `unwritable` output, standard output is a descriptor open for
// reading only, so every write fails as on a full disk, on every system.
// `asNobody` drops to an unprivileged user first where we are root.
// `errToTerminal` gives the command a pseudo-terminal as its standard error.
enum class Output { kept, unwritable };
Run cli(const QByteArrayList& args, Output output = Output::kept, bool asNobody = false,
        bool errToTerminal = false)
{
    QTemporaryDir scratch;
    const QByteArray outPath = QFile::encodeName(scratch.path()) + "/out";
    QByteArray errPath = QFile::encodeName(scratch.path()) + "/err";
    int terminal = -1;
    if (errToTerminal) {
        terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0)
            return {};
        errPath = ::ptsname(terminal);
    }
    const pid_t child = ::fork();
    if (child == 0) {
        const int out = ::open(outPath.constData(),
                               (output == Output::kept ? O_WRONLY : O_RDONLY) | O_CREAT | O_TRUNC, 0644);
        const int err = ::open(errPath.constData(), O_WRONLY | O_CREAT | (errToTerminal ? 0 : O_TRUNC), 0644);
        if (out < 0 || err < 0 || ::dup2(out, 1) < 0 || ::dup2(err, 2) < 0)
            ::_exit(98);
        if (asNobody && ::getuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
            ::_exit(99);
        std::vector<char*> argv{const_cast<char*>(TIDEWICK_CLI)};
        QByteArrayList owned = args;
        for (QByteArray& arg : owned)
            argv.push_back(arg.data());
        argv.push_back(nullptr);
        ::execv(TIDEWICK_CLI, argv.data());
        ::_exit(97);
    }
    int status = 0;
    QByteArray fromTerminal;
    if (terminal >= 0) {
        // Read while it runs: a full terminal would hold the command up.
        char buffer[4096];
        for (ssize_t n; (n = ::read(terminal, buffer, sizeof buffer)) > 0;)
            fromTerminal.append(buffer, n);
        ::close(terminal);
    }
    ::waitpid(child, &status, 0);
    Run run;
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    auto slurp = [](const QByteArray& path) {
        QFile file(QFile::decodeName(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    run.out = slurp(outPath);
    run.err = terminal >= 0 ? fromTerminal : slurp(errPath);
    return run;
}

} // namespace

class CliTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }

private Q_SLOTS:
    void cleanupTestCase() { removeTree(base()); }

    void scanTakesNamesAsBytes()
    {
        // A folder named in Latin-1 scans by its bytes; an emoji survives
        // into JSON as one letter.
        const QByteArray latin = base() + "/caf\xe9";
        makeDir(latin);
        writeFile(latin + "/inside", 100000);
        writeFile(base() + "/\xf0\x9f\x98\x80smile", 10);
        Run run = cli({"scan", latin, "--json", "--quiet"});
        QCOMPARE(run.exitCode, 0);
        QJsonObject root = QJsonDocument::fromJson(run.out).object().value(QStringLiteral("root")).toObject();
        QCOMPARE(root.value(QStringLiteral("size")).toInteger(), allocatedBytes(latin + "/inside"));

        run = cli({"scan", base(), "--json", "--quiet"});
        QCOMPARE(run.exitCode, 0);
        root = QJsonDocument::fromJson(run.out).object().value(QStringLiteral("root")).toObject();
        QStringList names;
        for (const QJsonValue child : root.value(QStringLiteral("children")).toArray())
            names.append(child.toObject().value(QStringLiteral("name")).toString());
        QVERIFY2(names.contains(QStringLiteral("\U0001F600smile")), qPrintable(names.join(u',')));
    }

    void progressOnlyOnATerminal_data()
    {
        QTest::addColumn<bool>("terminal");
        QTest::addColumn<bool>("quiet");
        QTest::addColumn<bool>("progress");
        QTest::newRow("log file") << false << false << false;
        QTest::newRow("terminal") << true << false << true;
        QTest::newRow("terminal, quiet") << true << true << false;
    }
    void progressOnlyOnATerminal()
    {
        QFETCH(bool, terminal);
        QFETCH(bool, quiet);
        QFETCH(bool, progress);
        writeFile(base() + "/some", 10);
        QByteArrayList args{"scan", base(), "--depth", "0"};
        if (quiet)
            args << "--quiet";
        const Run run = cli(args, Output::kept, false, terminal);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.err.contains("\033[K"), progress);
        if (!terminal)
            QCOMPARE(run.err, QByteArray());
    }

    void commandLineUsage_data()
    {
        QTest::addColumn<QByteArrayList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArrayList>("said"); // each in the output (0) or the one-line message (2)
        const QByteArrayList everything{"scan", "trash", "apps", "related", "uninstall", "feed", "--workers",
                                        "--depth", "--quiet", "--home", "--system-library", "--include-shared",
                                        "--dry-run", "--base", "--locale", "--version"};
        QTest::newRow("help") << QByteArrayList{"--help"} << 0 << everything;
        QTest::newRow("command help") << QByteArrayList{"scan", "--help"} << 0
                                      << QByteArrayList{"usage: tidewick-cli scan PATH", "--workers N", "--json"};
        QTest::newRow("feed help") << QByteArrayList{"feed", "-h"} << 0 << QByteArrayList{"--base URL", "--locale CODE"};
        QTest::newRow("version") << QByteArrayList{"--version"} << 0 << QByteArrayList{"tidewick-cli " TIDEWICK_VERSION "\n"};
        QTest::newRow("nothing") << QByteArrayList{} << 2 << QByteArrayList{"no command"};
        QTest::newRow("unknown command") << QByteArrayList{"scna"} << 2 << QByteArrayList{"unknown command scna"};
        QTest::newRow("unknown option") << QByteArrayList{"scan", "/", "--bogus"} << 2
                                        << QByteArrayList{"tidewick-cli scan: unknown option --bogus"};
        QTest::newRow("missing value") << QByteArrayList{"related", "x.app", "--home"} << 2
                                       << QByteArrayList{"--home needs a value"};
        QTest::newRow("bad number") << QByteArrayList{"scan", "/", "--workers", "0"} << 2 << QByteArrayList{"--workers"};
        QTest::newRow("no path") << QByteArrayList{"scan", "--json"} << 2 << QByteArrayList{"PATH"};
        QTest::newRow("two paths") << QByteArrayList{"scan", "/a", "/b"} << 2 << QByteArrayList{"/b"};
        QTest::newRow("trash option") << QByteArrayList{"trash", "--jsno", "x"} << 2 << QByteArrayList{"--jsno"};
        QTest::newRow("bad locale") << QByteArrayList{"feed", "--locale", "fr"} << 2 << QByteArrayList{"--locale"};
    }
    void commandLineUsage()
    {
        QFETCH(QByteArrayList, args);
        QFETCH(int, exitCode);
        QFETCH(QByteArrayList, said);
        const Run run = cli(args);
        QCOMPARE(run.exitCode, exitCode);
        const QByteArray& text = exitCode == 0 ? run.out : run.err;
        for (const QByteArray& part : said)
            QVERIFY2(text.contains(part), text.constData());
        if (exitCode == 2) {
            QCOMPARE(run.err.count('\n'), 1);
            QVERIFY(run.err.endsWith('\n'));
            QVERIFY(run.out.isEmpty());
        } else {
            QVERIFY(run.err.isEmpty());
        }
    }

    void failuresEndWithAMessageAndAnExitCode()
    {
        writeFile(base() + "/some", 10);
        // Output that cannot be written: the whole run fails.
        Run run = cli({"scan", base(), "--json", "--quiet"}, Output::unwritable);
        QVERIFY(run.exitCode != 0);
        QVERIFY(run.err.contains("cannot write"));
        run = cli({"trash", base() + "/missing"}, Output::unwritable);
        QVERIFY(run.exitCode != 0);

        // A root that is not there, or that we may not read.
        run = cli({"scan", base() + "/missing", "--quiet"});
        QVERIFY(run.exitCode != 0);
        QVERIFY(run.err.contains("No such file or directory"));
        const QByteArray closed = base() + "/closed";
        makeDir(closed);
        writeFile(closed + "/secret", 10);
        QVERIFY(::chmod(closed.constData(), 0700) == 0);
        QVERIFY(::chmod(base().constData(), 0755) == 0);
        if (::getuid() != 0)
            QVERIFY(::chmod(closed.constData(), 0) == 0);
        run = cli({"scan", closed, "--quiet"}, Output::kept, true);
        QVERIFY2(run.exitCode != 0 && run.exitCode != 99, run.err.constData());
        QVERIFY(run.err.contains("cannot"));
        QVERIFY(::chmod(closed.constData(), 0700) == 0);
    }
};

TIDEWICK_TEST_MAIN(CliTest)
#include "tst_cli.moc"
