// The uninstaller's knowledge: discovery of bundles, their identity (nested
// bundles, names, privileged helpers, signed groups), our Mach-O signature
// reader on well-formed and broken input, and the related-file search on
// Library trees built for every rule, with the near misses that must not match.

#include "TestMain.h"
#include "MachOFixture.h"
#include "TestFiles.h"
#include "uninstaller/AppDiscovery.h"
#include "uninstaller/AppRelatedFiles.h"
#include "uninstaller/InstalledApp.h"
#include "uninstaller/MachOSignature.h"
#include "uninstaller/PropertyList.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QStringEncoder>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tw;
using namespace tw::test;
using namespace tw::AppRelatedFiles;

namespace {

void writeBytes(const QByteArray& path, const QByteArray& data)
{
    QVERIFY(QDir().mkpath(QFile::decodeName(path.left(path.lastIndexOf('/')))));
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    QVERIFY2(fd >= 0, path.constData());
    QCOMPARE(::write(fd, data.constData(), size_t(data.size())), ssize_t(data.size()));
    ::close(fd);
}

void writePlist(const QByteArray& path, const QVariantMap& map, bool binary = false)
{
    const QByteArray data = writePropertyList(map, binary);
    QVERIFY(!data.isEmpty());
    writeBytes(path, data);
}

// A bundle with an Info.plist and, if given, a main executable.
void makeBundle(const QByteArray& path, QVariantMap info, const QByteArray& executable = {},
                bool binary = false)
{
    if (!executable.isEmpty()) {
        info.insert(QStringLiteral("CFBundleExecutable"), QStringLiteral("main"));
        writeBytes(path + "/Contents/MacOS/main", executable);
    }
    writePlist(path + "/Contents/Info.plist", info, binary);
}

QVariantMap ident(const char* id)
{
    return {{QStringLiteral("CFBundleIdentifier"), QString::fromLatin1(id)}};
}

QStringList names(const std::vector<std::unique_ptr<InstalledApp>>& apps)
{
    QStringList list;
    for (const auto& app : apps)
        list.append(app->name());
    return list;
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
                   {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.example.foo")},
                    {QStringLiteral("CFBundleName"), QStringLiteral("Foo")},
                    {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("2.1")},
                    {QStringLiteral("CFBundleVersion"), QStringLiteral("210")}},
                   "exe");
        // Binary plist; a display name that is a number falls through to the name.
        makeBundle(apps + "/bar.app",
                   {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.example.bar")},
                    {QStringLiteral("CFBundleDisplayName"), 42},
                    {QStringLiteral("CFBundleName"), QStringLiteral("bar")},
                    {QStringLiteral("CFBundleVersion"), QStringLiteral("7")}},
                   {}, true);
        makeBundle(apps + "/NoId.app", {{QStringLiteral("CFBundleName"), QStringLiteral("NoId")}});
        makeBundle(apps + "/Shout.APP", ident("com.example.shout"));
        makeBundle(apps + "/Outer.app/Contents/Applications/Inner.app", ident("com.example.inner"));
        makeBundle(apps + "/Outer.app", ident("com.example.outer"));
        makeBundle(apps + "/Utilities/Tool.app", ident("com.example.tool"));
        makeBundle(apps + "/Vendor/Suite/Deep.app", ident("com.example.deep"));
        makeBundle(apps + "/A/B/C/TooDeep.app", ident("com.example.toodeep"));
        makeBundle(apps + "/.Hidden.app", ident("com.example.hidden"));
        QVERIFY(::symlink(QByteArray(apps + "/Foo.app").constData(),
                          QByteArray(apps + "/Alias.app").constData()) == 0);
        // A second root with a copy of Foo: two rows, /Applications first.
        const QByteArray home = base() + "/home";
        makeBundle(home + "/Applications/Foo.app", ident("com.example.foo"));

        const auto found = AppDiscovery::listInstalledApps({apps, home + "/Applications"});
        QCOMPARE(names(found),
                 (QStringList{QStringLiteral("bar"), QStringLiteral("Deep"), QStringLiteral("Foo"),
                              QStringLiteral("Foo"), QStringLiteral("Outer"),
                              QStringLiteral("Shout"), QStringLiteral("Tool")}));
        QCOMPARE(found[2]->url(), apps + "/Foo.app");
        QCOMPARE(found[3]->url(), home + "/Applications/Foo.app");
        QCOMPARE(found[2]->version(), std::optional<QString>(QStringLiteral("2.1")));
        QCOMPARE(found[0]->version(), std::optional<QString>(QStringLiteral("7")));
        QCOMPARE(found[0]->bundleID(), QStringLiteral("com.example.bar"));
        QVERIFY(!found[5]->version());
        QVERIFY(found[2]->id() != found[3]->id());
        QCOMPARE(found[2]->bundleSize(), 0);
        QCOMPARE(found[2]->totalSize(), 0);
        QVERIFY(!found[2]->isRunning()); // no bundle runs here
        // Sizes and related files arrive later and add up.
        found[2]->setBundleSize(1000);
        RelatedFile support;
        support.size = 250;
        found[2]->setRelatedLoading(true);
        QVERIFY(found[2]->relatedLoading());
        found[2]->setRelated({support, support});
        QVERIFY(found[2]->relatedLoaded() && !found[2]->relatedLoading());
        QCOMPARE(found[2]->totalSize(), 1500);
        QVERIFY(AppDiscovery::listInstalledApps({}).empty());

        // Roots: the home's Applications only when it exists.
        QCOMPARE(AppDiscovery::applicationRoots(home),
                 (QByteArrayList{"/Applications", home + "/Applications"}));
        QCOMPARE(AppDiscovery::applicationRoots(base() + "/nohome"),
                 QByteArrayList{"/Applications"});
    }

    void namesAndDatesFollowTheirRules()
    {
        const QByteArray apps = base() + "/names";
        makeBundle(apps + "/Empty.app",
                   {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.e.empty")},
                    {QStringLiteral("CFBundleDisplayName"), QString()},
                    {QStringLiteral("CFBundleName"), QStringLiteral("Named")}});
        makeBundle(apps + "/Plain.app", ident("com.e.plain"));
        makeBundle(apps + "/Run.app", ident("com.e.run"), "binary");
        const auto empty = AppDiscovery::makeInstalledApp(apps + "/Empty.app");
        QCOMPARE(empty->name(), QString()); // only the type is tested
        QCOMPARE(AppDiscovery::makeInstalledApp(apps + "/Plain.app")->name(),
                 QStringLiteral("Plain"));
        QVERIFY(!AppDiscovery::makeInstalledApp(apps + "/Missing.app"));

        // The executable's access date first, else the bundle folder's.
        setAccessTime(apps + "/Run.app/Contents/MacOS/main", 1'700'000'000);
        setAccessTime(apps + "/Run.app", 1'600'000'000);
        QCOMPARE(AppDiscovery::lastOpenedDate(apps + "/Run.app")->toSecsSinceEpoch(),
                 1'700'000'000);
        setAccessTime(apps + "/Plain.app", 1'500'000'000);
        QCOMPARE(AppDiscovery::lastOpenedDate(apps + "/Plain.app")->toSecsSinceEpoch(),
                 1'500'000'000);
    }

    void bundleSizesCountHardLinksOnce()
    {
        const QByteArray bundle = base() + "/sized/Big.app";
        makeBundle(bundle, ident("com.e.big"));
        QVERIFY(QDir().mkpath(QFile::decodeName(bundle + "/Contents/Resources")));
        writeFile(bundle + "/Contents/Resources/data", 64 * 1024);
        QVERIFY(::link(QByteArray(bundle + "/Contents/Resources/data").constData(),
                       QByteArray(bundle + "/Contents/Resources/again").constData()) == 0);
        QVERIFY(::symlink("data", QByteArray(bundle + "/Contents/Resources/link").constData()) ==
                0);
        const qint64 data = allocatedBytes(bundle + "/Contents/Resources/data");
        const qint64 plist = allocatedBytes(bundle + "/Contents/Info.plist");
        QCOMPARE(allocatedSize(bundle), data + plist);
        QCOMPARE(allocatedSize(bundle + "/Contents/Resources/link"), 0);
        QCOMPARE(allocatedSize(bundle + "/Contents/Resources/data"), data);
        QCOMPARE(allocatedSize(base() + "/sized/none"), 0);
        // The same inode in another bundle counts there too.
        const QByteArray other = base() + "/sized/Other.app";
        QVERIFY(QDir().mkpath(QFile::decodeName(other)));
        QVERIFY(::link(QByteArray(bundle + "/Contents/Resources/data").constData(),
                       QByteArray(other + "/data").constData()) == 0);
        QCOMPARE(allocatedSize(other), data);
    }

    void signatureReaderFindsGroups()
    {
        const QByteArray xml =
            entitlementsXml(groupsArray({"ABCDE12345.com.example.shared", "group.com.example"}));
        const QSet<QString> expected{QStringLiteral("ABCDE12345.com.example.shared"),
                                     QStringLiteral("group.com.example")};
        for (const bool wide : {false, true}) {
            for (const bool bigEndian : {false, true})
                QCOMPARE(machOApplicationGroups(machOImage(xml, wide, bigEndian)), expected);
        }
        // Universal, with the 32- and the 64-bit fat header; slices are united.
        const QByteArray other = entitlementsXml(groupsArray({"group.other"}));
        for (const bool fat64 : {false, true}) {
            const QByteArray fat =
                universal({machOImage(xml, true, false), machOImage(other, false, false)}, fat64);
            QCOMPARE(machOApplicationGroups(fat),
                     expected + QSet<QString>{QStringLiteral("group.other")});
        }
        // Not a list of text, or no such key: nothing.
        QVERIFY(machOApplicationGroups(
                    machOImage(entitlementsXml("<string>group.x</string>"), true, false))
                    .isEmpty());
        QVERIFY(
            machOApplicationGroups(
                machOImage(entitlementsXml("<array><string>a</string><integer>1</integer></array>"),
                           true, false))
                .isEmpty());
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
                const QByteArray cut(whole.constData(), length); // a copy: its end is the end
                const QSet<QString> groups = machOApplicationGroups(cut);
                QVERIFY(groups.isEmpty() ||
                        groups == QSet<QString>{QStringLiteral("group.com.example")});
            }
        }
        // Random damage anywhere: no crash, no groups out of nothing.
        QRandomGenerator random(7);
        for (int round = 0; round < 3000; ++round) {
            QByteArray broken = round % 2 ? thin : fat;
            for (int flips = 0; flips < 4; ++flips)
                broken[qsizetype(random.bounded(int(broken.size())))] = char(random.bounded(256));
            const QSet<QString> groups = machOApplicationGroups(broken);
            QVERIFY(groups.size() <= 2);
        }
        // Offsets that point far outside.
        QByteArray wild = thin;
        put32(wild, 32 + 8, 0xfffffff0, false);
        QVERIFY(machOApplicationGroups(wild).isEmpty());
        QByteArray fatWild = fat;
        put32(fatWild, 4, 0xffffffff, true);
        QVERIFY(machOApplicationGroups(fatWild).isEmpty());
    }

    void identityGathersNestedBundles()
    {
        const QByteArray app = base() + "/identity/Foo.app";
        QVariantMap info = ident("com.example.foo");
        info.insert(QStringLiteral("CFBundleName"), QStringLiteral("Foo Pro"));
        info.insert(QStringLiteral("CFBundleDisplayName"), QString());
        info.insert(QStringLiteral("SMPrivilegedExecutables"),
                    QVariantMap{{QStringLiteral("com.example.foo.helper"),
                                 QStringLiteral("anchor apple")}});
        makeBundle(
            app, info,
            machOImage(entitlementsXml(groupsArray({"TEAM.com.example.group"})), true, false));
        const QByteArray login = app + "/Contents/Library/LoginItems/Helper.app";
        QVariantMap helperInfo = ident("com.example.foo.login");
        helperInfo.insert(QStringLiteral("CFBundleName"), QStringLiteral("Login Helper"));
        makeBundle(login, helperInfo);
        makeBundle(login + "/Contents/XPCServices/Svc.xpc", ident("com.example.foo.svc"));
        QVariantMap extension = ident("com.example.foo.share");
        extension.insert(QStringLiteral("CFBundleDisplayName"), QStringLiteral("Share It"));
        makeBundle(app + "/Contents/PlugIns/Share.appex", extension);
        makeBundle(app + "/Contents/Frameworks/Kit.framework/Versions/A/XPCServices/Hidden.xpc",
                   ident("com.vendor.kit.xpc"));
        makeBundle(app + "/Contents/Frameworks/Loud.FRAMEWORK/XPCServices/Found.xpc",
                   ident("com.vendor.loud.xpc"));
        // A nested bundle that cannot be opened still has its signature read.
        writeBytes(app + "/Contents/XPCServices/Broken.xpc",
                   machOImage(entitlementsXml(groupsArray({"group.broken"})), true, false));
        QVERIFY(::symlink(QByteArray(base() + "/identity").constData(),
                          QByteArray(app + "/Contents/Link.app").constData()) == 0);

        const Identity identity =
            Identity::build(QStringLiteral("com.example.foo"), QStringLiteral("Foo"), app);
        QCOMPARE(identity.bundleIDs, (QSet<QString>{QStringLiteral("com.example.foo"),
                                                    QStringLiteral("com.example.foo.helper"),
                                                    QStringLiteral("com.example.foo.login"),
                                                    QStringLiteral("com.example.foo.svc"),
                                                    QStringLiteral("com.example.foo.share"),
                                                    QStringLiteral("com.vendor.loud.xpc")}));
        QCOMPARE(identity.names, (QSet<QString>{QStringLiteral("Foo"), QStringLiteral("Foo Pro")}));
        QCOMPARE(identity.privilegedHelperIDs,
                 QSet<QString>{QStringLiteral("com.example.foo.helper")});
        QCOMPARE(identity.groupIDs, (QSet<QString>{QStringLiteral("TEAM.com.example.group"),
                                                   QStringLiteral("group.broken")}));

        const Identity bare = Identity::build(QStringLiteral("com.x"), QString(), std::nullopt);
        QCOMPARE(bare.bundleIDs.size(), 1);
        QCOMPARE(bare.names, QSet<QString>{QString()}); // an empty name given stays
        QVERIFY(bare.groupIDs.isEmpty() && bare.privilegedHelperIDs.isEmpty());
    }

    void searchMatchesExactlyAndNothingElse()
    {
        const QByteArray root = base() + "/search";
        const QByteArray home = root + "/home";
        const QByteArray user = home + "/Library";
        const QByteArray system = root + "/Library";
        const QByteArray app = root + "/Applications/Foo.app";
        QVariantMap info = ident("com.example.foo");
        info.insert(QStringLiteral("SMPrivilegedExecutables"),
                    QVariantMap{{QStringLiteral("com.example.foo.helper"), QStringLiteral("req")}});
        makeBundle(app, info,
                   machOImage(entitlementsXml(groupsArray({"TEAM.group.foo"})), true, false));
        const auto dir = [](const QByteArray& path) {
            QVERIFY(QDir().mkpath(QFile::decodeName(path)));
        };
        const auto file = [](const QByteArray& path) { writeBytes(path, "x"); };

        // What belongs to Foo.
        dir(user + "/Application Support/com.example.foo");
        dir(user + "/Application Support/FOO");
        dir(user + "/Application Support/Vendor/Foo");
        dir(user + "/Caches/com.example.foo");
        file(user + "/Preferences/com.example.foo.plist");
        file(user +
             "/Preferences/ByHost/com.example.foo.12345678-1234-1234-1234-123456789ABC.plist");
        dir(user + "/Containers/com.example.foo");
        const QByteArray uuidContainer = user + "/Containers/0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0";
        writePlist(uuidContainer + "/.com.apple.containermanagerd.metadata.plist",
                   {{QStringLiteral("MCMMetadataIdentifier"), QStringLiteral("com.example.foo")}},
                   true);
        dir(user + "/Group Containers/ABCDE12345.com.example.foo");
        dir(user + "/Group Containers/TEAM.group.foo");
        dir(user + "/Application Scripts/TEAM.group.foo");
        dir(user + "/Saved Application State/com.example.foo.savedState");
        dir(user + "/Logs/Foo");
        file(user + "/Cookies/com.example.foo.binarycookies");
        dir(user + "/WebKit/com.example.foo");
        file(user + "/HTTPStorages/com.example.foo.binarycookies");
        file(user + "/LaunchAgents/com.example.foo.plist");
        writePlist(system + "/LaunchDaemons/com.other.plist",
                   {{QStringLiteral("Label"), QStringLiteral("com.example.foo.helper")}});
        writePlist(system + "/LaunchAgents/org.someone.starter.plist",
                   {{QStringLiteral("Label"), QStringLiteral("org.someone.starter")},
                    {QStringLiteral("ProgramArguments"),
                     QVariantList{QString::fromUtf8(app + "/Contents/MacOS/main"),
                                  QStringLiteral("--quiet")}}});
        file(system + "/PrivilegedHelperTools/com.example.foo.helper");

        // Near misses, and other applications' files.
        dir(user + "/Application Support/Foo Helper");
        dir(user + "/Application Support/FooBar");
        dir(user + "/Application Support/Vendor/Sub/Foo");
        dir(root + "/elsewhere/Foo");
        QVERIFY(::symlink(QByteArray(root + "/elsewhere").constData(),
                          QByteArray(user + "/Application Support/Linked").constData()) == 0);
        dir(user + "/Caches/foo-cache");
        dir(user + "/Caches/com.example.foobar");
        file(user + "/Preferences/com.example.foo.helper2.plist");
        file(user + "/Preferences/COM.EXAMPLE.FOO.plist");
        file(user + "/Preferences/ByHost/com.example.foo.backup.plist");
        dir(user + "/Containers/11111111-2222-3333-4444-555555555555");
        writePlist(user + "/Containers/AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE/"
                          ".com.apple.containermanagerd.metadata.plist",
                   {{QStringLiteral("MCMMetadataIdentifier"), QStringLiteral("com.other.app")}});
        dir(user + "/Group Containers/ABCDE12345.com.example.foobar");
        dir(user + "/Saved Application State/com.example.foo.savedstate");
        writePlist(system + "/LaunchAgents/org.someone.relative.plist",
                   {{QStringLiteral("Label"), QStringLiteral("x")},
                    {QStringLiteral("Program"), QStringLiteral("Foo.app/Contents/MacOS/main")}});
        writePlist(
            system + "/LaunchAgents/org.someone.neighbour.plist",
            {{QStringLiteral("Label"), QStringLiteral("y")},
             {QStringLiteral("Program"), QString::fromUtf8(root + "/Applications/Foo.app2/main")}});
        file(system + "/LaunchAgents/not-a-plist.plist");
        file(system + "/PrivilegedHelperTools/com.example.foo");

        const Identity identity =
            Identity::build(QStringLiteral("com.example.foo"), QStringLiteral("Foo"), app);
        const QList<RelatedFile> found = search(identity, home, system);
        const QStringList paths = relativePaths(found, root);
        QCOMPARE(
            paths,
            (QStringList{
                QStringLiteral("Library/LaunchAgents/org.someone.starter.plist"),
                QStringLiteral("Library/LaunchDaemons/com.other.plist"),
                QStringLiteral("Library/PrivilegedHelperTools/com.example.foo.helper"),
                QStringLiteral("home/Library/Application Scripts/TEAM.group.foo"),
                QStringLiteral("home/Library/Application Support/FOO"),
                QStringLiteral("home/Library/Application Support/Vendor/Foo"),
                QStringLiteral("home/Library/Application Support/com.example.foo"),
                QStringLiteral("home/Library/Caches/com.example.foo"),
                QStringLiteral("home/Library/Containers/0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0"),
                QStringLiteral("home/Library/Containers/com.example.foo"),
                QStringLiteral("home/Library/Cookies/com.example.foo.binarycookies"),
                QStringLiteral("home/Library/Group Containers/ABCDE12345.com.example.foo"),
                QStringLiteral("home/Library/Group Containers/TEAM.group.foo"),
                QStringLiteral("home/Library/HTTPStorages/com.example.foo.binarycookies"),
                QStringLiteral("home/Library/LaunchAgents/com.example.foo.plist"),
                QStringLiteral("home/Library/Logs/Foo"),
                QStringLiteral("home/Library/Preferences/ByHost/"
                               "com.example.foo.12345678-1234-1234-1234-123456789ABC.plist"),
                QStringLiteral("home/Library/Preferences/com.example.foo.plist"),
                QStringLiteral("home/Library/Saved Application State/com.example.foo.savedState"),
                QStringLiteral("home/Library/WebKit/com.example.foo"),
            }));
        // Categories come from the row; shared: every group container, and
        // what carries a group's name elsewhere.
        for (const RelatedFile& file : found) {
            const QString path = QFile::decodeName(file.url);
            const bool group = path.contains(QLatin1String("/Group Containers/"));
            QCOMPARE(file.isShared, group || path.endsWith(QLatin1String("TEAM.group.foo")));
            if (group)
                QCOMPARE(file.category, RelatedCategory::groupContainers);
            if (path.contains(QLatin1String("/LaunchDaemons/")))
                QCOMPARE(file.category, RelatedCategory::launchDaemons);
            if (path.contains(QLatin1String("/ByHost/")))
                QCOMPARE(file.category, RelatedCategory::preferences);
        }
        QCOMPARE(relatedCategoryTitle(RelatedCategory::httpStorages),
                 QStringLiteral("HTTP Storages"));
        // Each item says which rule and which identifier made it Foo's.
        QHash<QString, MatchReason> reasons;
        for (const RelatedFile& file : found)
            reasons.insert(relativePaths({file}, root).first(), file.reason);
        using K = MatchReason::Kind;
        const QString id = QStringLiteral("com.example.foo");
        const QList<std::pair<const char*, MatchReason>> expected{
            {"home/Library/Containers/0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0", {K::containerMetadataNamesID, id}},
            {"home/Library/Containers/com.example.foo", {K::containerNamedAfterID, id}},
            {"home/Library/Group Containers/TEAM.group.foo", {K::groupContainerSigned, QStringLiteral("TEAM.group.foo")}},
            {"home/Library/Group Containers/ABCDE12345.com.example.foo", {K::groupContainerOfID, id}},
            {"home/Library/Preferences/com.example.foo.plist", {K::preferencesOfID, id}},
            {"home/Library/Caches/com.example.foo", {K::namedAfterID, id}},
            {"Library/LaunchDaemons/com.other.plist", {K::launchdLabel, QStringLiteral("com.example.foo.helper")}},
            {"Library/LaunchAgents/org.someone.starter.plist",
             {K::launchdProgramInBundle, QString::fromUtf8(app + "/Contents/MacOS/main")}},
            {"Library/PrivilegedHelperTools/com.example.foo.helper",
             {K::privilegedHelperDeclared, QStringLiteral("com.example.foo.helper")}},
        };
        for (const auto& [path, reason] : expected)
            QCOMPARE(reasons.value(QString::fromUtf8(path)), reason);
        QCOMPARE(reasons.value(QStringLiteral("home/Library/Logs/Foo")).kind, K::namedAfterName);

        // A helper not declared by the application is never found, even by its identifier's name.
        const Identity undeclared =
            Identity::build(QStringLiteral("com.example.foo"), QStringLiteral("Foo"), std::nullopt);
        for (const RelatedFile& file : search(undeclared, home, system)) {
            QVERIFY(!file.url.contains("PrivilegedHelperTools"));
            QVERIFY(!file.url.contains("org.someone.starter")); // no bundle, no program rule
        }

        // Another application sees none of Foo's files.
        const Identity other =
            Identity::build(QStringLiteral("com.other.app"), QStringLiteral("Other"), std::nullopt);
        const QList<RelatedFile> theirs = search(other, home, system);
        QCOMPARE(relativePaths(theirs, root),
                 QStringList{QStringLiteral(
                     "home/Library/Containers/AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE")});
    }

    void onePathIsListedOnce()
    {
        // The same folder through two spellings of the root, and twice by
        // rule, is one item with the first row's category.
        const QByteArray home = base() + "/once";
        QVERIFY(QDir().mkpath(
            QFile::decodeName(home + "/Library/Application Support/com.example.once")));
        const Identity identity = Identity::build(QStringLiteral("com.example.once"),
                                                  QStringLiteral("Once"), std::nullopt);
        const QList<RelatedFile> found = search(identity, home, home + "/./Library");
        QCOMPARE(found.size(), 1);
        QCOMPARE(found[0].category, RelatedCategory::applicationSupport);
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
        for (const QString& seed : seeds) {
            QFile file(corpus + QStringLiteral("/macho/") + seed);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(machOApplicationGroups(file.readAll()).size(), 2);
        }
        for (const QString& seed : QDir(corpus + QStringLiteral("/plist")).entryList(QDir::Files)) {
            QFile file(corpus + QStringLiteral("/plist/") + seed);
            QVERIFY(file.open(QIODevice::ReadOnly));
            (void)parsePropertyList(file.readAll());
        }
        QVERIFY(asDictionary(readPropertyList(QFile::encodeName(corpus) + "/plist/binary.plist")));
    }

    void propertyListsRoundTrip()
    {
        const QVariantMap value{
            {QStringLiteral("text"), QStringLiteral("ü")},
            {QStringLiteral("number"), qint64(-5)},
            {QStringLiteral("list"), QVariantList{true, 1.5, QByteArray("\x00\x01", 2)}}};
        for (const bool binary : {false, true}) {
            const auto parsed = asDictionary(parsePropertyList(writePropertyList(value, binary)));
            QVERIFY(parsed);
            QCOMPARE(parsed->value(QStringLiteral("text")).toString(), QStringLiteral("ü"));
            QCOMPARE(parsed->value(QStringLiteral("number")).toLongLong(), -5);
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
        QVERIFY(!parsePropertyList(QByteArray("\xFF\xFE\x00\xD8", 4))); // a lone surrogate
        QVERIFY(!parsePropertyList("not a plist"));
        QVERIFY(!parsePropertyList({}));
        QVERIFY(!asDictionary(parsePropertyList(writePropertyList(QVariantList{1}, false))));
    }
};

TIDEWICK_TEST_MAIN(UninstallerTest)
#include "tst_uninstaller.moc"
