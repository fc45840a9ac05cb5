#pragma once

#include "foundation/StoredSettings.h"

#include <QHash>
#include <QStringList>

#include <functional>

namespace norvane {

/// Stored settings in memory.
class MemorySettings : public StoredSettings
{
public:
    QString get(const QString &application, const QString &section, const QString &key,
                const QString &defaultValue) const override
    {
        reads.append(key);
        return values.value(keyOf(application, section, key), defaultValue);
    }
    void save(const QString &application, const QString &section, const QString &key,
              const QString &value) override
    {
        values.insert(keyOf(application, section, key), value);
        ++saves;
        if (onSave)
            onSave(key, value);
    }

    QHash<QString, QString> values; ///< under "application/section/key"
    int saves = 0;
    mutable QStringList reads; ///< the keys, in order
    std::function<void(const QString &key, const QString &value)> onSave;

private:
    static QString keyOf(const QString &application, const QString &section, const QString &key)
    {
        return application + u'/' + section + u'/' + key;
    }
};

} // namespace norvane
