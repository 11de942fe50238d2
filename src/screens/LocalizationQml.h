#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QVariantList>
#include <QVariantMap>

namespace tw {

// QML's view of the texts: `Loc.strings["key"]` in bindings (re-evaluated
// when the language changes), `Loc.string(key)` in script code, the byte
// and percent formatters, and the language menu's entries. Forwards to the
// process's LocalizationManager; lives on the GUI thread.
class LocalizationQml : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(Loc)
    QML_SINGLETON
    Q_PROPERTY(int current READ current WRITE setCurrent NOTIFY changed)
    Q_PROPERTY(QString code READ code NOTIFY changed)
    Q_PROPERTY(QVariantMap strings READ strings NOTIFY changed)
    // [{ value, code, name }] in menu order; each name in its own language.
    Q_PROPERTY(QVariantList languages READ languages CONSTANT)

public:
    explicit LocalizationQml(QObject* parent = nullptr);

    [[nodiscard]] int current() const;
    void setCurrent(int language);
    [[nodiscard]] QString code() const;
    [[nodiscard]] QVariantMap strings() const;
    [[nodiscard]] QVariantList languages() const;

    Q_INVOKABLE QString string(const QString& key) const;
    Q_INVOKABLE QString formatBytes(double count) const;
    Q_INVOKABLE QString percentText(double value, double total) const;

Q_SIGNALS:
    void changed();
};

} // namespace tw
