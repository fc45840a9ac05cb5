#pragma once

#include <QWidget>

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;

namespace norvane {

/// What the lists are searched by: a text and a range of days.
class FilterBar : public QWidget
{
    Q_OBJECT

public:
    explicit FilterBar(QWidget *parent = nullptr);

    QString text() const;
    /// "yyyy-MM-dd", inclusive; empty for no bound.
    QString from() const;
    /// "yyyy-MM-dd", the day behind the last one; empty for no bound.
    QString to() const;

    void focusText();
    void setText(const QString &text);

Q_SIGNALS:
    void changed();

private:
    /// Ranges of days that are asked for by name; those at the end by their dates.
    enum Range { All, Today, Week, Month, Year, Dates };

    void rangeChosen();
    QDate firstDay() const;

    QLineEdit *m_text;
    QComboBox *m_range;
    QLabel *m_fromLabel;
    QDateEdit *m_from;
    QLabel *m_toLabel;
    QDateEdit *m_to;
};

} // namespace norvane
