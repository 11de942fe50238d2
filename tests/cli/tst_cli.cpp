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
Run cli(const QByteArrayList& args, Output output = Output::kept, bool asNobody = false, bool errToTerminal = false)
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
        const int out = ::open(outPath.constData(), (output == Output::kept ? O_WRONLY : O_RDONLY) | O_CREAT | O_TRUNC, 0644);
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
    Run run;
    if (terminal >= 0) {
        // Read while it runs: a full terminal would hold the command up.
        char buffer[4096];
        for (ssize_t n; (n = ::read(terminal, buffer, sizeof buffer)) > 0;)
            run.err.append(buffer, n);
        ::close(terminal);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = contents(outPath);
    if (terminal < 0)
        run.err = contents(errPath);
    return run;
}

// One call: its arguments ("@" stands for the test's folder at the start of
// one), its exit code, and what it says, each part in its output (0) or in
// its message (otherwise); output it cannot write, and run as another user.
struct Call {
    QByteArrayList args;
    int exitCode;
    QByteArrayList said;
    Output output = Output::kept;
    bool asNobody = false;
};

} // namespace

Q_DECLARE_METATYPE(Call)

class CliTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }
    QJsonObject scannedRoot(const QByteArray& path)
    {
        const Run run = cli({"scan", path, "--json", "--quiet"});
        return run.exitCode ? QJsonObject() : QJsonDocument::fromJson(run.out).object().value("root").toObject();
    }

private Q_SLOTS:
    void initTestCase()
    {
        writeFile(base() + "/some", 10);
        // A folder named in Latin-1, and an emoji in a name.
        makeDir(base() + "/caf\xe9");
        writeFile(base() + "/caf\xe9/inside", 100000);
        writeFile(base() + "/\xf0\x9f\x98\x80smile", 10);
        // A folder another user may not read.
        makeTree(base() + "/closed", {{"secret", 10}});
        QVERIFY(::chmod(QByteArray(base() + "/closed").constData(), ::getuid() ? 0 : 0700) == 0);
        QVERIFY(::chmod(base().constData(), 0755) == 0);
    }
    void cleanupTestCase()
    {
        ::chmod(QByteArray(base() + "/closed").constData(), 0700);
        removeTree(base());
    }

    void scanTakesNamesAsBytes()
    {
        // The Latin-1 folder scans by its bytes; the emoji survives into
        // JSON as one letter.
        QCOMPARE(scannedRoot(base() + "/caf\xe9").value("size").toInteger(), allocatedBytes(base() + "/caf\xe9/inside"));
        QStringList names;
        for (const QJsonValue child : scannedRoot(base()).value("children").toArray())
            names.append(child.toObject().value("name").toString());
        QVERIFY2(names.contains(QStringLiteral("\U0001F600smile")), qPrintable(names.join(u',')));
    }

    void progressOnlyOnATerminal_data()
    {
        QTest::addColumn<bool>("terminal");
        QTest::addColumn<bool>("quiet");
        QTest::newRow("log file") << false << false;
        QTest::newRow("terminal") << true << false;
        QTest::newRow("terminal, quiet") << true << true;
    }
    void progressOnlyOnATerminal()
    {
        QFETCH(bool, terminal);
        QFETCH(bool, quiet);
        QByteArrayList args{"scan", base() + "/caf\xe9", "--depth", "0"};
        if (quiet)
            args << "--quiet";
        const Run run = cli(args, Output::kept, false, terminal);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.err.contains("\033[K"), terminal && !quiet);
        QVERIFY(terminal || run.err.isEmpty());
    }

    void calls_data()
    {
        QTest::addColumn<Call>("call");
        const QByteArrayList everything{"scan", "trash", "apps", "related", "uninstall", "feed", "--workers",
                                        "--depth", "--quiet", "--home", "--system-library", "--include-shared",
                                        "--dry-run", "--base", "--locale", "--version"};
        QTest::newRow("help") << Call{{"--help"}, 0, everything};
        QTest::newRow("command help") << Call{{"scan", "--help"}, 0, {"usage: tidewick-cli scan PATH", "--workers N", "--json"}};
        QTest::newRow("feed help") << Call{{"feed", "-h"}, 0, {"--base URL", "--locale CODE"}};
        QTest::newRow("version") << Call{{"--version"}, 0, {"tidewick-cli " TIDEWICK_VERSION "\n"}};
        QTest::newRow("nothing") << Call{{}, 2, {"no command"}};
        QTest::newRow("unknown command") << Call{{"scna"}, 2, {"unknown command scna"}};
        QTest::newRow("unknown option") << Call{{"scan", "/", "--bogus"}, 2, {"tidewick-cli scan: unknown option --bogus"}};
        QTest::newRow("missing value") << Call{{"related", "x.app", "--home"}, 2, {"--home needs a value"}};
        QTest::newRow("bad number") << Call{{"scan", "/", "--workers", "0"}, 2, {"--workers"}};
        QTest::newRow("no path") << Call{{"scan", "--json"}, 2, {"PATH"}};
        QTest::newRow("two paths") << Call{{"scan", "/a", "/b"}, 2, {"/b"}};
        QTest::newRow("trash option") << Call{{"trash", "--jsno", "x"}, 2, {"--jsno"}};
        QTest::newRow("bad locale") << Call{{"feed", "--locale", "fr"}, 2, {"--locale"}};
        // Output that cannot be written fails the whole run.
        QTest::newRow("unwritable") << Call{{"scan", "@", "--json", "--quiet"}, 1, {"cannot write"}, Output::unwritable};
        QTest::newRow("trash, unwritable") << Call{{"trash", "@/missing"}, 1, {}, Output::unwritable};
        // A root that is not there, or that we may not read.
        QTest::newRow("missing root") << Call{{"scan", "@/missing", "--quiet"}, 1, {"No such file or directory"}};
        QTest::newRow("closed root") << Call{{"scan", "@/closed", "--quiet"}, 1, {"cannot"}, Output::kept, true};
    }
    void calls()
    {
        QFETCH(Call, call);
        for (QByteArray& arg : call.args)
            if (arg.startsWith('@'))
                arg.replace(0, 1, base());
        const Run run = cli(call.args, call.output, call.asNobody);
        QVERIFY2(run.exitCode == call.exitCode, run.err.constData());
        const QByteArray& text = call.exitCode == 0 ? run.out : run.err;
        for (const QByteArray& part : call.said)
            QVERIFY2(text.contains(part), text.constData());
        if (call.exitCode == 0)
            QVERIFY(run.err.isEmpty());
        if (call.exitCode == 2)
            QVERIFY(run.err.count('\n') == 1 && run.err.endsWith('\n') && run.out.isEmpty());
    }
};

TIDEWICK_TEST_MAIN(CliTest)
#include "tst_cli.moc"
