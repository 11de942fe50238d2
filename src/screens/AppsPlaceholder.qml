import QtQuick

// The Applications mode until its screen is built: nothing to show.
Item {}
