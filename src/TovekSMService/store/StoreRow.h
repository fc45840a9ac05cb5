#pragma once

#include <QVariant>

namespace norvane {

/// A row of a query's answer, while it is looked at.
class StoreRow
{
public:
    virtual ~StoreRow() = default;

    virtual int columns() const = 0;
    virtual QVariant value(int column) const = 0;
};

} // namespace norvane
