#pragma once

#include "NorvaneSMS/import/FilePicker.h"
#include "common/FailureNumbers.h"
#include "common/SpreadsheetConnection.h"

#include <QHash>
#include <QList>

#include <functional>

namespace norvane {

using namespace Qt::StringLiterals;

/// Spreadsheets that a test makes up: what is in them, what fails, and what was asked of them.
struct SheetScript
{
    struct Sheet
    {
        QString name;
        QStringList fields;
        QList<QList<std::optional<QString>>> rows;
    };

    QList<Sheet> sheets;
    std::optional<NumberedFailure> failsToOpen;
    QStringList errors;
    std::function<void(qint32 row)> inRow; ///< may raise
    std::function<void()> whileOpening;
    QStringList calls;
};

class ScriptedConnection : public SpreadsheetConnection
{
public:
    explicit ScriptedConnection(SheetScript &script) : m_script(script)
    {
        m_script.calls.append(u"new"_s);
    }
    ~ScriptedConnection() override { m_script.calls.append(u"release"_s); }

    void open(const QString &path) override
    {
        m_script.calls.append(u"open(%1)"_s.arg(path));
        if (m_script.whileOpening)
            m_script.whileOpening();
        if (m_script.failsToOpen)
            throw NumberedFailure(*m_script.failsToOpen);
        m_isOpen = true;
    }
    void close() override { m_script.calls.append(u"close"_s); }
    QStringList errors() const override { return m_script.errors; }
    QStringList sheets() override
    {
        QStringList names;
        for (const SheetScript::Sheet &sheet : m_script.sheets)
            names.append(sheet.name);
        return names;
    }
    Table describe(const QString &name) override
    {
        m_script.calls.append(u"describe(%1)"_s.arg(name));
        const SheetScript::Sheet &found = sheet(name);
        return {found.fields, static_cast<qint32>(found.rows.size())};
    }
    std::unique_ptr<SheetRows> rows(const QString &name) override
    {
        m_script.calls.append(u"rows(%1)"_s.arg(name));
        return std::make_unique<Rows>(m_script, sheet(name));
    }

private:
    class Rows : public SheetRows
    {
    public:
        Rows(SheetScript &script, const SheetScript::Sheet &sheet)
            : m_script(script), m_sheet(sheet)
        {}
        bool isAtEnd() const override { return m_row >= m_sheet.rows.size(); }
        std::optional<QString> value(const QString &field) override
        {
            if (m_script.inRow)
                m_script.inRow(m_row + 1);
            const qsizetype index = m_sheet.fields.indexOf(field);
            if (index < 0)
                throw SheetFailure::noSuchField();
            return m_sheet.rows.at(m_row).value(index);
        }
        void moveNext() override { ++m_row; }

    private:
        SheetScript &m_script;
        SheetScript::Sheet m_sheet;
        qint32 m_row = 0;
    };

    const SheetScript::Sheet &sheet(const QString &name) const
    {
        if (!m_isOpen)
            Failure::raise(Failure::ObjectClosed, u"ScriptedConnection"_s);
        for (const SheetScript::Sheet &candidate : m_script.sheets) {
            if (candidate.name == name)
                return candidate;
        }
        throw SheetFailure::noSuchSheet(name);
    }

    SheetScript &m_script;
    bool m_isOpen = false;
};

/// A file picker that answers as told and keeps what it was asked.
class ScriptedPicker : public FilePicker
{
public:
    Outcome pick(const Request &request) override
    {
        requests.append(request);
        if (whilePicking)
            whilePicking();
        return outcome;
    }

    QList<Request> requests;
    Outcome outcome;
    std::function<void()> whilePicking; ///< may raise
};

} // namespace norvane
