// Refused: ARC does not let an integer become an object pointer unbridged.
#import <AppKit/AppKit.h>

#include <QWindow>

NSView* viewOf(QWindow& window)
{
    return reinterpret_cast<NSView*>(window.winId());
}
