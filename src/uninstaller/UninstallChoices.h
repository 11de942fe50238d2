#pragma once

// The uninstall dialog's choices: which of the bundle and its leftovers go,
// shared items left out unless ticked, the user's ticks kept when the search
// delivers more, and the rules of the confirm button. The dialog moves
// nothing itself: it hands the chosen paths to AppState. GUI thread only.

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QUuid>
#include <QVariantList>
#include <chrono>

namespace tw {

class AppState;
class InstalledApp;
struct RelatedFile;

class UninstallChoices : public QObject {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY appChanged)
    // Setting the application (the dialog appearing) rebuilds every choice.
    Q_PROPERTY(tw::InstalledApp* app READ app WRITE setApp NOTIFY appChanged)
    Q_PROPERTY(bool bundleChecked READ bundleChecked WRITE setBundleChecked NOTIFY choicesChanged)
    // [{ title, symbol, files: [{ id, name, path, size, shared, reason, checked }] }]
    // by category in category order; sizes descending, stable, in a group.
    Q_PROPERTY(QVariantList groups READ groups NOTIFY choicesChanged)
    Q_PROPERTY(bool searching READ searching NOTIFY choicesChanged)
    Q_PROPERTY(bool runningStatus READ runningStatus NOTIFY runningChanged)
    Q_PROPERTY(bool confirmEnabled READ confirmEnabled NOTIFY choicesChanged)
    Q_PROPERTY(QString confirmTitle READ confirmTitle NOTIFY choicesChanged)
    Q_PROPERTY(QString selectedSizeText READ selectedSizeText NOTIFY choicesChanged)
    Q_PROPERTY(QString bundleSizeText READ bundleSizeText NOTIFY choicesChanged)

public:
    explicit UninstallChoices(QObject* parent = nullptr);
    // `recheckDelay`: how long after Quit the running state is looked at again.
    UninstallChoices(std::chrono::milliseconds recheckDelay, QObject* parent);

    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);
    [[nodiscard]] InstalledApp* app() const { return m_app; }
    void setApp(InstalledApp* app);

    // Fresh choices for the same application, as on the dialog's appearing.
    Q_INVOKABLE void reset();

    [[nodiscard]] bool bundleChecked() const { return m_bundleChecked; }
    void setBundleChecked(bool checked);
    [[nodiscard]] bool isChecked(const RelatedFile& file) const;
    // `id` is a RelatedFile's id as text.
    Q_INVOKABLE void setChecked(const QString& id, bool checked);

    // The bundle first when ticked, then the ticked leftovers in the search's order.
    [[nodiscard]] QList<QByteArray> selectedURLs() const;
    [[nodiscard]] qint64 selectedSize() const;
    [[nodiscard]] QVariantList groups() const;
    [[nodiscard]] bool searching() const;
    [[nodiscard]] bool runningStatus() const { return m_runningStatus; }
    [[nodiscard]] bool confirmEnabled() const;
    [[nodiscard]] QString confirmTitle() const;
    [[nodiscard]] QString selectedSizeText() const;
    [[nodiscard]] QString bundleSizeText() const;

    // Looks at the running state afresh, then hands the selection to
    // AppState when the button's rules allow it.
    Q_INVOKABLE void confirm();
    // Asks the application to quit, and looks once more after the delay.
    Q_INVOKABLE void quit();

Q_SIGNALS:
    void appChanged();
    void choicesChanged();
    void runningChanged();

private:
    void merge();
    void setRunningStatus(bool running);

    QPointer<AppState> m_state;
    QPointer<InstalledApp> m_app;
    bool m_bundleChecked = true;
    QHash<QUuid, bool> m_relatedChecked;
    bool m_runningStatus = false;
    std::chrono::milliseconds m_recheckDelay{800};
};

} // namespace tw
