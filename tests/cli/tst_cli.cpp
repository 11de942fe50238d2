// tidewick-cli as a shell user meets it: exit codes and messages that tell
// the truth, names taken as the bytes they are, JSON that parses.

#include "TestMain.h"
#include "TestFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
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
enum class Output { kept, unwritable };
Run cli(const QByteArrayList& args, Output output = Output::kept, bool asNobody = false)
{
    QTemporaryDir scratch;
    const QByteArray outPath = QFile::encodeName(scratch.path()) + "/out";
    const QByteArray errPath = QFile::encodeName(scratch.path()) + "/err";
    const pid_t child = ::fork();
    if (child == 0) {
        const int out = ::open(outPath.constData(),
                               (output == Output::kept ? O_WRONLY : O_RDONLY) | O_CREAT | O_TRUNC, 0644);
        const int err = ::open(errPath.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
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
    ::waitpid(child, &status, 0);
    Run run;
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    auto slurp = [](const QByteArray& path) {
        QFile file(QFile::decodeName(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    run.out = slurp(outPath);
    run.err = slurp(errPath);
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
