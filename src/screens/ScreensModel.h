#pragma once

// Texts and conditions of the window's screens other than the chart: the
// progress screen's lines, the Full Disk Access prompt's path, and the
// settings links. Made in C++ so the rules are tested without a window.
// GUI thread only.

#include "scan/ScanProgress.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVariantMap>

namespace tw {

class AppState;

// "12.3 MB • 4567 items": "items" for every count, 1 included.
[[nodiscard]] QString progressCountsText(const ScanProgress& progress);
// "1235 files/s" (rounded half away from zero, fixed English), or empty
// below 1.0 file a second.
[[nodiscard]] QString progressRateText(const ScanProgress& progress);

class ScreensModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
    Q_PROPERTY(QString progressCounts READ progressCounts NOTIFY progressChanged)
    Q_PROPERTY(QString progressRate READ progressRate NOTIFY progressChanged)
    Q_PROPERTY(QString progressPath READ progressPath NOTIFY progressChanged)
    Q_PROPERTY(QString fdaPathLabel READ fdaPathLabel NOTIFY fdaChanged)
    Q_PROPERTY(QString homePath READ homePath CONSTANT)
    // The delete dialog's facts about AppState's deleteCandidate: name, path,
    // size, and for a folder the file count (plain digits); empty otherwise.
    Q_PROPERTY(QVariantMap deleteFacts READ deleteFacts NOTIFY deleteChanged)
    // Opened by the views (Qt.openUrlExternally); the core opens nothing.
    Q_PROPERTY(QUrl fullDiskAccessSettingsUrl READ fullDiskAccessSettingsUrl CONSTANT)
    Q_PROPERTY(QUrl appManagementSettingsUrl READ appManagementSettingsUrl CONSTANT)

public:
    explicit ScreensModel(QObject* parent = nullptr);

    // Does not own the state.
    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);

    [[nodiscard]] QString progressCounts() const;
    [[nodiscard]] QString progressRate() const;
    [[nodiscard]] QString progressPath() const;
    [[nodiscard]] QString fdaPathLabel() const;
    [[nodiscard]] QString homePath() const;

    [[nodiscard]] QUrl fullDiskAccessSettingsUrl() const;
    [[nodiscard]] QUrl appManagementSettingsUrl() const;
    [[nodiscard]] QVariantMap deleteFacts() const;
    // A folder from the picker (a file URL): raises nothing yet, scans it
    // through the Full Disk Access gate.
    Q_INVOKABLE void scanPickedFolder(const QUrl& folder) const;

Q_SIGNALS:
    void stateChanged();
    void progressChanged();
    void fdaChanged();
    void deleteChanged();

private:
    QPointer<AppState> m_state;
};

} // namespace tw
