#pragma once

// The Kinds tab: bytes, share and files of each kind in AppState's focus,
// largest first, and the largest files of the chosen kind. Counting runs on
// a worker, one pass over the focus's subtree, whenever the focus or the
// tree changes; the last few foci are kept, so going back up is instant.
// The tree itself carries nothing per kind. GUI thread only.

#include "chart/ChartEmphasis.h"
#include "scan/FileKinds.h"
#include "scan/FileNode.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QVariantList>
#include <atomic>
#include <memory>
#include <vector>

namespace tw {

class AppState;
class NodeActions;

class KindsModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(tw::AppState* state READ state WRITE setState NOTIFY stateChanged)
    // Where the choice of a kind and the colouring go for the chart.
    Q_PROPERTY(tw::ChartEmphasis* emphasis READ emphasis WRITE setEmphasis NOTIFY emphasisChanged)
    // Counts only while something shows the figures (the tab, the colouring).
    Q_PROPERTY(bool active READ active WRITE setActive NOTIFY activeChanged)
    Q_PROPERTY(bool counting READ counting NOTIFY countingChanged)
    // The chosen kind's catalogue key, empty for none.
    Q_PROPERTY(QString selectedKey READ selectedKey NOTIFY selectionChanged)
    // The chosen kind's largest files in the focus: [{name, sizeText, folder}].
    Q_PROPERTY(QVariantList largestFiles READ largestFiles NOTIFY selectionChanged)

public:
    static constexpr std::size_t kCachedFoci = 6;
    enum Role {
        KindRole = Qt::UserRole + 1, // the FileKind's number, for the colour
        KeyRole,                     // its catalogue key
        SizeTextRole,
        ShareTextRole,
        FilesTextRole,
        IsSelectedRole,
    };
    Q_ENUM(Role)

    explicit KindsModel(QObject* parent = nullptr);
    ~KindsModel() override;

    [[nodiscard]] AppState* state() const { return m_state; }
    void setState(AppState* state);
    [[nodiscard]] ChartEmphasis* emphasis() const { return m_emphasis; }
    void setEmphasis(ChartEmphasis* emphasis);
    [[nodiscard]] bool active() const { return m_active; }
    void setActive(bool active);
    [[nodiscard]] bool counting() const { return m_counting; }
    [[nodiscard]] QString selectedKey() const;
    [[nodiscard]] QVariantList largestFiles() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    // Chooses the row's kind, or lets go of it when it was chosen.
    Q_INVOKABLE void choose(int row);
    // One of the chosen kind's largest files: shown in its folder and marked on the chart.
    Q_INVOKABLE void showFile(int index);
    // The context menu's subject: one of the largest files.
    Q_INVOKABLE bool offerFile(tw::NodeActions* actions, int index) const;

    // The figures for AppState's focus when counted, else null.
    [[nodiscard]] std::shared_ptr<const KindSummary> current() const;

Q_SIGNALS:
    void stateChanged();
    void emphasisChanged();
    void countingChanged();
    void activeChanged();
    void selectionChanged();
    // A count finished (for tests and the window).
    void counted();

private:
    struct Cached {
        const FileNode* focus = nullptr;
        std::shared_ptr<const KindSummary> summary;
    };
    void refresh();
    void treeChanged();
    void apply(std::shared_ptr<const KindSummary> summary);
    void setCounting(bool counting);

    QPointer<AppState> m_state;
    QPointer<ChartEmphasis> m_emphasis;
    std::vector<Cached> m_cache; // most recent last
    std::shared_ptr<const KindSummary> m_shown;
    std::vector<FileKind> m_rows;
    std::shared_ptr<std::atomic<bool>> m_stale; // the running count's
    bool m_counting = false;
    bool m_active = false;
};

} // namespace tw
