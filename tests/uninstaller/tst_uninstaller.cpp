// The uninstaller's knowledge: discovery of bundles, their identity (nested
// bundles, names, privileged helpers, signed groups), our Mach-O signature
// reader on well-formed and broken input, and the related-file search on
// Library trees built for every rule, with the near misses that must not match.

#include "TestMain.h"
#include "BundleFixture.h"
#include "MachOFixture.h"
#include "scan/RawFiles.h"
#include "uninstaller/AppDiscovery.h"
#include "uninstaller/AppRelatedFiles.h"
#include "uninstaller/InstalledApp.h"
#include "uninstaller/MachOSignature.h"
#include "uninstaller/PropertyList.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QStringEncoder>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tw;
using namespace tw::test;
using namespace tw::AppRelatedFiles;

namespace {

QVariantMap ident(const QByteArray& id)
{
    return {{"CFBundleIdentifier", QString::fromLatin1(id)}};
}

QStringList relativePaths(const QList<RelatedFile>& files, const QByteArray& base)
{
    QStringList list;
    for (const RelatedFile& file : files)
        list.append(QFile::decodeName(file.url.mid(base.size() + 1)));
    return list;
}

void setAccessTime(const QByteArray& path, qint64 seconds)
{
    const timespec times[2]{{seconds, 0}, {0, UTIME_OMIT}};
    QVERIFY(::utimensat(AT_FDCWD, path.constData(), times, AT_SYMLINK_NOFOLLOW) == 0);
}

} // namespace

class UninstallerTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray base() const { return QFile::encodeName(m_dir.path()); }

private Q_SLOTS:
    void discoveryFindsBundlesThreeLevelsDeep()
    {
        const QByteArray apps = base() + "/Applications";
        makeBundle(apps + "/Foo.app",
                   {{"CFBundleIdentifier", "com.example.foo"}, {"CFBundleName", "Foo"},
                    {"CFBundleShortVersionString", "2.1"}, {"CFBundleVersion", "210"}},
                   "exe");
        // Binary plist; a display name that is a number falls through to the name.
        makeBundle(apps + "/bar.app",
                   {{"CFBundleIdentifier", "com.example.bar"}, {"CFBundleDisplayName", 42},
                    {"CFBundleName", "bar"}, {"CFBundleVersion", "7"}},
                   {}, true);
        makeBundle(apps + "/NoId.app", {{"CFBundleName", "NoId"}});
        for (const auto& [path, id] : {std::pair{"/Shout.APP", "shout"}, {"/Outer.app/Contents/Applications/Inner.app", "inner"},
                                       {"/Outer.app", "outer"}, {"/Utilities/Tool.app", "tool"},
                                       {"/Vendor/Suite/Deep.app", "deep"}, {"/A/B/C/TooDeep.app", "toodeep"},
                                       {"/.Hidden.app", "hidden"}})
            makeBundle(apps + path, ident(QByteArray("com.example.") + id));
        symlinkAt(apps + "/Foo.app", apps + "/Alias.app");
        // A second root with a copy of Foo: two rows, /Applications first.
        const QByteArray home = base() + "/home";
        makeBundle(home + "/Applications/Foo.app", ident("com.example.foo"));

        const auto found = AppDiscovery::listInstalledApps({apps, home + "/Applications"});
        QStringList names;
        for (const auto& app : found)
            names.append(app->name());
        QCOMPARE(names, (QStringList{"bar", "Deep", "Foo", "Foo", "Outer", "Shout", "Tool"}));
        QCOMPARE(QByteArrayList({found[2]->url(), found[3]->url()}), QByteArrayList({apps + "/Foo.app", home + "/Applications/Foo.app"}));
        QCOMPARE(found[2]->version(), std::optional<QString>("2.1"));
        QCOMPARE(found[0]->version(), std::optional<QString>("7"));
        QCOMPARE(found[0]->bundleID(), QStringLiteral("com.example.bar"));
        QVERIFY(!found[5]->version() && found[2]->id() != found[3]->id());
        QVERIFY(found[2]->bundleSize() == 0 && found[2]->totalSize() == 0);
        QVERIFY(!found[2]->isRunning()); // no bundle runs here
        // Sizes and related files arrive later and add up.
        found[2]->setBundleSize(1000);
        RelatedFile support;
        support.size = 250;
        found[2]->setRelatedLoading(true);
        QVERIFY(found[2]->relatedLoading());
        found[2]->setRelated({support, support});
        QVERIFY(found[2]->relatedLoaded() && !found[2]->relatedLoading() && AppDiscovery::listInstalledApps({}).empty());
        QCOMPARE(found[2]->totalSize(), 1500);

        // Roots: the home's Applications only when it exists.
        QCOMPARE(AppDiscovery::applicationRoots(home), (QByteArrayList{"/Applications", home + "/Applications"}));
        QCOMPARE(AppDiscovery::applicationRoots(base() + "/nohome"), QByteArrayList{"/Applications"});
    }

    void namesAndDatesFollowTheirRules()
    {
        const QByteArray apps = base() + "/names";
        makeBundle(apps + "/Empty.app",
                   {{"CFBundleIdentifier", "com.e.empty"}, {"CFBundleDisplayName", QString()}, {"CFBundleName", "Named"}});
        makeBundle(apps + "/Plain.app", ident("com.e.plain"));
        makeBundle(apps + "/Run.app", ident("com.e.run"), "binary");
        QCOMPARE(AppDiscovery::makeInstalledApp(apps + "/Empty.app")->name(), QString()); // only the type is tested
        QCOMPARE(AppDiscovery::makeInstalledApp(apps + "/Plain.app")->name(), QStringLiteral("Plain"));
        QVERIFY(!AppDiscovery::makeInstalledApp(apps + "/Missing.app"));

        // The executable's access date first, else the bundle folder's.
        setAccessTime(apps + "/Run.app/Contents/MacOS/main", 1'700'000'000);
        setAccessTime(apps + "/Run.app", 1'600'000'000);
        QCOMPARE(AppDiscovery::lastOpenedDate(apps + "/Run.app")->toSecsSinceEpoch(), 1'700'000'000);
        setAccessTime(apps + "/Plain.app", 1'500'000'000);
        QCOMPARE(AppDiscovery::lastOpenedDate(apps + "/Plain.app")->toSecsSinceEpoch(), 1'500'000'000);
    }

    void bundleSizesCountHardLinksOnce()
    {
        const QByteArray bundle = base() + "/sized/Big.app", resources = bundle + "/Contents/Resources";
        makeBundle(bundle, ident("com.e.big"));
        makeTree(resources, {{"data", 64 * 1024}});
        QVERIFY(::link(QByteArray(resources + "/data").constData(), QByteArray(resources + "/again").constData()) == 0);
        symlinkAt("data", resources + "/link");
        const qint64 data = allocatedBytes(resources + "/data");
        QCOMPARE(allocatedSize(bundle), data + allocatedBytes(bundle + "/Contents/Info.plist"));
        QCOMPARE(allocatedSize(resources + "/data"), data);
        QVERIFY(allocatedSize(resources + "/link") == 0 && allocatedSize(base() + "/sized/none") == 0);
        // The same inode in another bundle counts there too.
        const QByteArray other = makeTree(base() + "/sized/Other.app", {});
        QVERIFY(::link(QByteArray(resources + "/data").constData(), QByteArray(other + "/data").constData()) == 0);
        QCOMPARE(allocatedSize(other), data);
    }

    void signatureReaderFindsGroups()
    {
        const QByteArray xml = entitlementsXml(groupsArray({"ABCDE12345.com.example.shared", "group.com.example"}));
        const QSet<QString> expected{"ABCDE12345.com.example.shared", "group.com.example"};
        for (const bool wide : {false, true})
            for (const bool bigEndian : {false, true})
                QCOMPARE(machOApplicationGroups(machOImage(xml, wide, bigEndian)), expected);
        // Universal, with the 32- and the 64-bit fat header; slices are united.
        const QByteArray other = entitlementsXml(groupsArray({"group.other"}));
        for (const bool fat64 : {false, true})
            QCOMPARE(machOApplicationGroups(universal({machOImage(xml, true, false), machOImage(other, false, false)}, fat64)),
                     expected + QSet<QString>{"group.other"});
        // Not a list of text, or no such key, or no Mach-O: nothing.
        for (const QByteArray& value : {QByteArray("<string>group.x</string>"),
                                        QByteArray("<array><string>a</string><integer>1</integer></array>")})
            QVERIFY(machOApplicationGroups(machOImage(entitlementsXml(value), true, false)).isEmpty());
        QVERIFY(machOApplicationGroups(QByteArray("#!/bin/sh\necho not mach-o\n")).isEmpty());
    }

    void signatureReaderSurvivesBrokenInput()
    {
        const QByteArray xml = entitlementsXml(groupsArray({"group.com.example"}));
        const QByteArray thin = machOImage(xml, true, false);
        const QByteArray fat = universal({thin, machOImage(xml, false, true)}, false);
        // Every truncation reads nothing past its end (the sanitizers watch)
        // and finds the groups only when the signature is whole.
        for (const QByteArray& whole : {thin, fat}) {
            for (qsizetype length = 0; length < whole.size(); ++length) {
                // A copy: its end is the end.
                const QSet<QString> groups = machOApplicationGroups(QByteArray(whole.constData(), length));
                QVERIFY(groups.isEmpty() || groups == QSet<QString>{"group.com.example"});
            }
        }
        // Random damage anywhere: no crash, no groups out of nothing.
        QRandomGenerator random(7);
        for (int round = 0; round < 3000; ++round) {
            QByteArray broken = round % 2 ? thin : fat;
            for (int flips = 0; flips < 4; ++flips)
                broken[qsizetype(random.bounded(int(broken.size())))] = char(random.bounded(256));
            QVERIFY(machOApplicationGroups(broken).size() <= 2);
        }
        // Offsets that point far outside.
        QByteArray wild = thin, fatWild = fat;
        put32(wild, 32 + 8, 0xfffffff0, false);
        put32(fatWild, 4, 0xffffffff, true);
        QVERIFY(machOApplicationGroups(wild).isEmpty() && machOApplicationGroups(fatWild).isEmpty());
    }

    void identityGathersNestedBundles()
    {
        const QByteArray app = base() + "/identity/Foo.app";
        makeBundle(app,
                   {{"CFBundleIdentifier", "com.example.foo"}, {"CFBundleName", "Foo Pro"}, {"CFBundleDisplayName", QString()},
                    {"SMPrivilegedExecutables", QVariantMap{{"com.example.foo.helper", "anchor apple"}}}},
                   signedWithGroups({"TEAM.com.example.group"}));
        const QByteArray login = app + "/Contents/Library/LoginItems/Helper.app";
        makeBundle(login, {{"CFBundleIdentifier", "com.example.foo.login"}, {"CFBundleName", "Login Helper"}});
        makeBundle(login + "/Contents/XPCServices/Svc.xpc", ident("com.example.foo.svc"));
        makeBundle(app + "/Contents/PlugIns/Share.appex",
                   {{"CFBundleIdentifier", "com.example.foo.share"}, {"CFBundleDisplayName", "Share It"}});
        makeBundle(app + "/Contents/Frameworks/Kit.framework/Versions/A/XPCServices/Hidden.xpc", ident("com.vendor.kit.xpc"));
        makeBundle(app + "/Contents/Frameworks/Loud.FRAMEWORK/XPCServices/Found.xpc", ident("com.vendor.loud.xpc"));
        // A nested bundle that cannot be opened still has its signature read.
        writeBytes(app + "/Contents/XPCServices/Broken.xpc", signedWithGroups({"group.broken"}));
        symlinkAt(base() + "/identity", app + "/Contents/Link.app");

        const Identity identity = Identity::build("com.example.foo", "Foo", app);
        QCOMPARE(identity.bundleIDs, (QSet<QString>{"com.example.foo", "com.example.foo.helper", "com.example.foo.login",
                                                    "com.example.foo.svc", "com.example.foo.share", "com.vendor.loud.xpc"}));
        QCOMPARE(identity.names, (QSet<QString>{"Foo", "Foo Pro"}));
        QCOMPARE(identity.privilegedHelperIDs, QSet<QString>{"com.example.foo.helper"});
        QCOMPARE(identity.groupIDs, (QSet<QString>{"TEAM.com.example.group", "group.broken"}));

        const Identity bare = Identity::build("com.x", QString(), std::nullopt);
        QCOMPARE(bare.names, QSet<QString>{QString()}); // an empty name given stays
        QVERIFY(bare.bundleIDs.size() == 1 && bare.groupIDs.isEmpty() && bare.privilegedHelperIDs.isEmpty());
    }

    void searchMatchesExactlyAndNothingElse()
    {
        const QByteArray root = base() + "/search";
        const QByteArray home = root + "/home", system = root + "/Library";
        const QByteArray app = root + "/Applications/Foo.app";
        const QString main = QString::fromUtf8(app + "/Contents/MacOS/main");
        makeBundle(app,
                   {{"CFBundleIdentifier", "com.example.foo"},
                    {"SMPrivilegedExecutables", QVariantMap{{"com.example.foo.helper", "req"}}}},
                   signedWithGroups({"TEAM.group.foo"}));
        // Paths from `root`, a folder where one ends in "/": Foo's own, with
        // the rule and identifier that make it Foo's where a row names them,
        // then near misses and other applications' files.
        using K = MatchReason::Kind;
        struct Row {
            const char* path;
            bool isFoos;
            QVariantMap plist = {};
            std::optional<K> kind = {};
            QString by = QStringLiteral("com.example.foo"); // null: any identifier
        };
        const Row rows[] = {
            {"home/Library/Application Support/com.example.foo/", true},
            {"home/Library/Application Support/FOO/", true},
            {"home/Library/Application Support/Vendor/Foo/", true},
            {"home/Library/Caches/com.example.foo/", true, {}, K::namedAfterID},
            {"home/Library/Preferences/com.example.foo.plist", true, {}, K::preferencesOfID},
            {"home/Library/Preferences/ByHost/com.example.foo.12345678-1234-1234-1234-123456789ABC.plist", true},
            {"home/Library/Containers/com.example.foo/", true, {}, K::containerNamedAfterID},
            {"home/Library/Containers/0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0/", true, {}, K::containerMetadataNamesID},
            {"home/Library/Group Containers/ABCDE12345.com.example.foo/", true, {}, K::groupContainerOfID},
            {"home/Library/Group Containers/TEAM.group.foo/", true, {}, K::groupContainerSigned, "TEAM.group.foo"},
            {"home/Library/Application Scripts/TEAM.group.foo/", true},
            {"home/Library/Saved Application State/com.example.foo.savedState/", true},
            {"home/Library/Logs/Foo/", true, {}, K::namedAfterName, QString()},
            {"home/Library/Cookies/com.example.foo.binarycookies", true},
            {"home/Library/WebKit/com.example.foo/", true},
            {"home/Library/HTTPStorages/com.example.foo.binarycookies", true},
            {"home/Library/LaunchAgents/com.example.foo.plist", true},
            {"Library/LaunchDaemons/com.other.plist", true, {{"Label", "com.example.foo.helper"}}, K::launchdLabel,
             "com.example.foo.helper"},
            {"Library/LaunchAgents/org.someone.starter.plist", true,
             {{"Label", "org.someone.starter"}, {"ProgramArguments", QVariantList{main, "--quiet"}}},
             K::launchdProgramInBundle, main},
            {"Library/PrivilegedHelperTools/com.example.foo.helper", true, {}, K::privilegedHelperDeclared,
             "com.example.foo.helper"},
            {"home/Library/Application Support/Foo Helper/", false},
            {"home/Library/Application Support/FooBar/", false},
            {"home/Library/Application Support/Vendor/Sub/Foo/", false},
            {"elsewhere/Foo/", false}, // reached only through a link
            {"home/Library/Caches/foo-cache/", false},
            {"home/Library/Caches/com.example.foobar/", false},
            {"home/Library/Preferences/com.example.foo.helper2.plist", false},
            {"home/Library/Preferences/COM.EXAMPLE.FOO.plist", false},
            {"home/Library/Preferences/ByHost/com.example.foo.backup.plist", false},
            {"home/Library/Containers/11111111-2222-3333-4444-555555555555/", false},
            {"home/Library/Containers/AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE/", false},
            {"home/Library/Group Containers/ABCDE12345.com.example.foobar/", false},
            {"home/Library/Saved Application State/com.example.foo.savedstate/", false},
            {"Library/LaunchAgents/org.someone.relative.plist", false,
             {{"Label", "x"}, {"Program", "Foo.app/Contents/MacOS/main"}}},
            {"Library/LaunchAgents/org.someone.neighbour.plist", false,
             {{"Label", "y"}, {"Program", QString::fromUtf8(root + "/Applications/Foo.app2/main")}}},
            {"Library/LaunchAgents/not-a-plist.plist", false},
            {"Library/PrivilegedHelperTools/com.example.foo", false},
        };
        const auto bare = [](const Row& row) { return QString::fromUtf8(row.path).remove(QRegularExpression("/$")); };
        QStringList expected;
        for (const Row& row : rows) {
            const QByteArray path = root + '/' + row.path;
            if (path.endsWith('/'))
                QVERIFY(QDir().mkpath(QFile::decodeName(path)));
            else if (!row.plist.isEmpty())
                writePlist(path, row.plist);
            else
                writeBytes(path, "x");
            if (row.isFoos)
                expected.append(bare(row));
        }
        std::sort(expected.begin(), expected.end(), [](const QString& a, const QString& b) { return a.toUtf8() < b.toUtf8(); });
        const QByteArray containers = home + "/Library/Containers/";
        const QByteArray metadata = "/.com.apple.containermanagerd.metadata.plist";
        writePlist(containers + "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0" + metadata,
                   {{"MCMMetadataIdentifier", "com.example.foo"}}, true);
        writePlist(containers + "AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE" + metadata, {{"MCMMetadataIdentifier", "com.other.app"}});
        symlinkAt(root + "/elsewhere", home + "/Library/Application Support/Linked");

        const QList<RelatedFile> found = search(Identity::build("com.example.foo", "Foo", app), home, system);
        QCOMPARE(relativePaths(found, root), expected);
        // Categories come from the row; shared: every group container, and
        // what carries a group's name elsewhere. Each item says which rule
        // and which identifier made it Foo's.
        for (const RelatedFile& file : found) {
            const QString path = QFile::decodeName(file.url);
            const bool group = path.contains(QLatin1String("/Group Containers/"));
            QCOMPARE(file.isShared, group || path.endsWith(QLatin1String("TEAM.group.foo")));
            for (const auto& [folder, category] : {std::pair{"/Group Containers/", RelatedCategory::groupContainers},
                                                   {"/LaunchDaemons/", RelatedCategory::launchDaemons},
                                                   {"/ByHost/", RelatedCategory::preferences}})
                QVERIFY(!path.contains(QLatin1String(folder)) || file.category == category);
            const QString relative = relativePaths({file}, root).first();
            const Row& row = *std::find_if(std::begin(rows), std::end(rows), [&](const Row& r) { return bare(r) == relative; });
            if (row.kind)
                QCOMPARE(file.reason.kind, *row.kind);
            if (row.kind && !row.by.isNull())
                QCOMPARE(file.reason, (MatchReason{*row.kind, row.by}));
        }
        QCOMPARE(relatedCategoryTitle(RelatedCategory::httpStorages), QStringLiteral("HTTP Storages"));

        // A helper not declared by the application is never found, even by its
        // identifier's name; without a bundle, no program rule.
        for (const RelatedFile& file : search(Identity::build("com.example.foo", "Foo", std::nullopt), home, system)) {
            QVERIFY(!file.url.contains("PrivilegedHelperTools"));
            QVERIFY(!file.url.contains("org.someone.starter"));
        }
        // Another application sees none of Foo's files.
        QCOMPARE(relativePaths(search(Identity::build("com.other.app", "Other", std::nullopt), home, system), root),
                 QStringList{"home/Library/Containers/AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE"});
    }

    void onePathIsListedOnce()
    {
        // The same folder through two spellings of the root, and twice by
        // rule, is one item with the first row's category.
        const QByteArray home = base() + "/once";
        makeTree(home, {{"Library/Application Support/com.example.once"}});
        const QList<RelatedFile> found = search(Identity::build("com.example.once", "Once", std::nullopt), home, home + "/./Library");
        QVERIFY(found.size() == 1 && found[0].category == RelatedCategory::applicationSupport);
        QCOMPARE(standardizedPath("/a/./b//c/../d"), QByteArray("/a/b/d"));
    }

    void fuzzCorpusStaysReadable()
    {
        // The fuzzers' seeds and what they once found: every signed seed
        // yields its groups, and no input brings the parsers down (one
        // binary list used to abort inside libplist).
        const QString corpus = QStringLiteral(QT_TESTCASE_SOURCEDIR "/../fuzz/corpus");
        const QStringList seeds = QDir(corpus + QStringLiteral("/macho")).entryList(QDir::Files);
        QVERIFY(seeds.size() >= 6);
        const auto read = [&](const QString& path) { return contents(QFile::encodeName(corpus + path)); };
        for (const QString& seed : seeds)
            QCOMPARE(machOApplicationGroups(read(QStringLiteral("/macho/") + seed)).size(), 2);
        for (const QString& seed : QDir(corpus + QStringLiteral("/plist")).entryList(QDir::Files))
            (void)parsePropertyList(read(QStringLiteral("/plist/") + seed));
        QVERIFY(asDictionary(readPropertyList(QFile::encodeName(corpus) + "/plist/binary.plist")));
    }

    void propertyListsRoundTrip()
    {
        const QVariantMap value{{"text", "ü"}, {"number", qint64(-5)}, {"list", QVariantList{true, 1.5, QByteArray("\x00\x01", 2)}}};
        for (const bool binary : {false, true}) {
            const auto parsed = asDictionary(parsePropertyList(writePropertyList(value, binary)));
            QVERIFY(parsed && parsed->value(QStringLiteral("number")).toLongLong() == -5);
            QCOMPARE(parsed->value(QStringLiteral("text")).toString(), QStringLiteral("ü"));
            QCOMPARE(parsed->value(QStringLiteral("list")).toList().at(2).toByteArray(),
                     QByteArray("\x00\x01", 2));
        }
        // XML as Macs also write it: with a UTF-8 mark, or in UTF-16 either way round.
        const QString xml = QString::fromUtf8(writePropertyList(value, false));
        QString utf16Xml = xml;
        utf16Xml.replace(QStringLiteral("encoding=\"UTF-8\""), QStringLiteral("encoding=\"UTF-16\""));
        const QStringEncoder::Flags mark = QStringEncoder::Flag::WriteBom;
        for (const QByteArray& encoded :
             QByteArrayList{QByteArray("\xEF\xBB\xBF") + xml.toUtf8(),
              QByteArray(QStringEncoder(QStringEncoder::Utf16LE, mark)(utf16Xml)),
              QByteArray(QStringEncoder(QStringEncoder::Utf16BE, mark)(utf16Xml)),
              QByteArray(QStringEncoder(QStringEncoder::Utf16LE)(utf16Xml))}) {
            const auto parsed = asDictionary(parsePropertyList(encoded));
            QVERIFY2(parsed, encoded.left(8).toHex().constData());
            QCOMPARE(parsed->value(QStringLiteral("text")).toString(), QStringLiteral("ü"));
        }
        // A lone surrogate, no list, nothing at all.
        for (const QByteArray& bad : {QByteArray("\xFF\xFE\x00\xD8", 4), QByteArray("not a plist"), QByteArray()})
            QVERIFY(!parsePropertyList(bad));
        QVERIFY(!asDictionary(parsePropertyList(writePropertyList(QVariantList{1}, false))));
    }
};

TIDEWICK_TEST_MAIN(UninstallerTest)
#include "tst_uninstaller.moc"
