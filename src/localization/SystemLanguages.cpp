#include "localization/SystemLanguages.h"

#include <QLocale>

namespace tw {

QStringList systemPreferredLanguages()
{
    return QLocale::system().uiLanguages();
}

} // namespace tw
