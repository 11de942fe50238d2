#include "uninstaller/Bundle.h"

#include "uninstaller/PropertyList.h"

#include <QFile>
#include <sys/stat.h>

namespace tw {

namespace {
bool isDirectory(const QByteArray& path)
{
    struct stat facts {};
    return ::stat(path.constData(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

bool isFile(const QByteArray& path)
{
    struct stat facts {};
    return ::stat(path.constData(), &facts) == 0 && S_ISREG(facts.st_mode);
}
} // namespace

std::optional<QString> textValue(const QVariantMap& map, const char* key)
{
    const auto found = map.constFind(QLatin1String(key));
    if (found == map.cend() || found->typeId() != QMetaType::QString)
        return std::nullopt;
    return found->toString();
}

std::optional<BundleInfo> openBundle(const QByteArray& path)
{
    if (!isDirectory(path))
        return std::nullopt;
    BundleInfo bundle;
    const bool macLayout = isDirectory(path + "/Contents");
    const QByteArray contents = macLayout ? QByteArray(path + "/Contents") : path;
    if (const auto info = asDictionary(readPropertyList(contents + "/Info.plist")))
        bundle.info = *info;
    bundle.identifier = textValue(bundle.info, "CFBundleIdentifier").value_or(QString());
    if (const auto name = textValue(bundle.info, "CFBundleExecutable"); name && !name->isEmpty()) {
        const QByteArray executable =
            (macLayout ? QByteArray(contents + "/MacOS/") : QByteArray(contents + "/")) +
            name->toUtf8();
        if (isFile(executable))
            bundle.executable = executable;
    }
    return bundle;
}

QString bundleBaseName(const QByteArray& path)
{
    QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    const qsizetype dot = name.lastIndexOf('.');
    if (dot > 0)
        name.truncate(dot);
    return QFile::decodeName(name);
}

} // namespace tw
