#pragma once

#include "app/AppState.h"

#include <QPointer>

namespace tw {

// For the views' helpers that follow one AppState: moves `current` to
// `next`, dropping the old state's connections to `receiver` and letting
// `connectAll` make the new ones. Returns false when `next` is already
// followed. GUI thread.
template <typename ConnectAll>
bool followState(QPointer<AppState>& current, AppState* next, QObject* receiver,
                 ConnectAll&& connectAll)
{
    if (current == next)
        return false;
    if (current)
        QObject::disconnect(current, nullptr, receiver, nullptr);
    current = next;
    if (current)
        connectAll(*current);
    return true;
}

} // namespace tw
