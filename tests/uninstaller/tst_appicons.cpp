// Application icons as the screens get them: the bundle's own .icns through
// Qt's image plugin, else the theme's generic application icon, at 48 by 48.

#include "TestMain.h"
#include "TestFiles.h"
#include "screens/AppIconProvider.h"
#include "uninstaller/PropertyList.h"

#include <QDir>
#include <QGuiApplication>
#include <QImageWriter>
#include <QTemporaryDir>

using namespace tw;
using namespace tw::test;

class AppIconsTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QByteArray bundle(const char* name, const char* iconFile)
    {
        const QByteArray path = makeTree(QFile::encodeName(m_dir.path()) + '/' + name, {{"Contents/Resources"}});
        writeBytes(path + "/Contents/Info.plist",
                   writePropertyList(QVariantMap{{"CFBundleIdentifier", "com.e.icon"}, {"CFBundleIconFile", iconFile}}, false));
        return path;
    }

private Q_SLOTS:
    void iconsComeFromTheBundleOrTheTheme()
    {
        // An .icns named without its extension, as bundles often do.
        const QByteArray own = bundle("Red.app", "AppIcon");
        QImage red(128, 128, QImage::Format_ARGB32);
        red.fill(QColor(220, 20, 20));
        QImageWriter writer(QFile::decodeName(own + "/Contents/Resources/AppIcon.icns"), "icns");
        QVERIFY2(writer.write(red), qPrintable(writer.errorString()));

        AppIconProvider provider;
        QSize size;
        const QImage icon =
            provider.requestImage(QString::fromLatin1(own.toPercentEncoding()), &size, {});
        QCOMPARE(size, QSize(48, 48));
        QCOMPARE(icon.pixelColor(24, 24).red(), 220);
        QCOMPARE(icon.pixelColor(24, 24).green(), 20);

        // No icon file, or one that is not an image: the generic icon, never empty.
        const QByteArray plain = bundle("Plain.app", "Broken.icns");
        writeBytes(plain + "/Contents/Resources/Broken.icns", "not an icon");
        const QImage generic = provider.requestImage(QString::fromLatin1(plain.toPercentEncoding()),
                                                     &size, QSize(32, 32));
        QCOMPARE(size, QSize(32, 32));
        int inked = 0;
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x)
                inked += qAlpha(generic.pixel(x, y)) > 0 ? 1 : 0;
        QVERIFY(inked > 100);
        QVERIFY(generic.pixelColor(16, 16) != icon.pixelColor(24, 24));
    }
};

TIDEWICK_TEST_MAIN(AppIconsTest)
#include "tst_appicons.moc"
