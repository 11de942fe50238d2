#pragma once

#include <QByteArrayList>

namespace tw::cli {

// `apps [ROOT…]`: the applications discovery finds under ROOTs (default: the
// system's roots), sized, as JSON.
int runApps(const QByteArrayList& args);

// `related BUNDLE [--home DIR] [--system-library DIR]`: the bundle's identity
// and the leftovers the search offers for it, as JSON.
int runRelated(const QByteArrayList& args);

} // namespace tw::cli
