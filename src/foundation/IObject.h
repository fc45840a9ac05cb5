#pragma once

#include <QString>
#include <QVariant>

#include <memory>

namespace norvane {

/// The suite's common object interface. A class that has nothing to report or to copy leaves these
/// bodies as they are.
class IObject
{
public:
    IObject() = default;
    IObject(const IObject &) = delete;
    IObject &operator=(const IObject &) = delete;
    virtual ~IObject() = default;

    virtual QString getClassIdAsString() const { return {}; }
    virtual void copyObject(const std::shared_ptr<IObject> & /*voObjectToCopy*/,
                            qint32 /*vlCopyWhat*/ = 0)
    {}
    virtual void copyToObject(const std::shared_ptr<IObject> & /*voCopyTo*/,
                              qint32 /*vlCopyWhat*/ = 0)
    {}
    virtual std::shared_ptr<IObject> generateCopy(qint32 /*vlCopyWhat*/ = 0) { return nullptr; }
    virtual QVariant getParameterValue(const QString & /*vsParameterName*/) const { return {}; }
};

} // namespace norvane

Q_DECLARE_METATYPE(std::shared_ptr<norvane::IObject>)
