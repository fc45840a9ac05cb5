#include "NorvaneHistory/DetailsPane.h"

#include "NorvaneHistory/ReadOnlyTable.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

namespace norvane {

using namespace Qt::StringLiterals;

DetailsPane::DetailsPane(Kind kind, QWidget *parent)
    : QWidget(parent), m_title(new QLabel(this)), m_text(new QPlainTextEdit(this))
{
    constexpr int textShare = 2;
    constexpr int stepsShare = 3;
    m_title->setObjectName(u"lblMessage"_s);
    m_title->setTextFormat(Qt::PlainText);
    m_title->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    m_text->setObjectName(u"txtMessage"_s);
    m_text->setReadOnly(true);
    m_text->setTabChangesFocus(true);
    m_text->setAccessibleName(GS(TextId::MessageColumn));

    auto *const parts = new QHBoxLayout;
    parts->addWidget(m_text, textShare);
    if (kind == Kind::Sent) {
        m_steps = new ReadOnlyTable(this);
        m_steps->setObjectName(u"tblSteps"_s);
        m_steps->setAccessibleName(GS(TextId::StepsName));
        parts->addWidget(m_steps, stepsShare);
    }
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_title);
    layout->addLayout(parts, 1);
    auto *const buttons = new QHBoxLayout;
    layout->addLayout(buttons);

    if (kind == Kind::Sent) {
        m_sendAgain = addButton(u"btnSendAgain"_s, TextId::SendAgainButton);
        connect(m_sendAgain, &QPushButton::clicked, this, &DetailsPane::sendAgainRequested);
        buttons->addWidget(m_sendAgain);
    }
    m_answer = addButton(u"btnAnswer"_s, TextId::AnswerButton);
    connect(m_answer, &QPushButton::clicked, this, &DetailsPane::answerRequested);
    m_optOut = addButton(u"btnOptOut"_s, TextId::OptOutButton);
    connect(m_optOut, &QPushButton::clicked, this,
            [this] { Q_EMIT optOutRequested(!m_isOptedOut); });
    buttons->addWidget(m_answer);
    buttons->addWidget(m_optOut);
    buttons->addStretch();
    showNothing();
}

QPushButton *DetailsPane::addButton(const QString &name, qint32 textId)
{
    auto *const button = new QPushButton(GS(textId), this);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

void DetailsPane::showMessage(const QString &title, const QString &text)
{
    m_title->setText(title);
    if (m_text->toPlainText() != text)
        m_text->setPlainText(text);
    m_answer->setEnabled(true);
}

void DetailsPane::showNothing()
{
    m_title->setText(GS(TextId::NothingChosen));
    m_text->clear();
    showSteps({});
    m_answer->setEnabled(false);
    setSendAgainEnabled(false);
    setOptedOut(std::nullopt);
}

void DetailsPane::showSteps(const QList<Step> &steps)
{
    if (!m_steps)
        return;
    QList<QStringList> rows;
    for (const Step &step : steps)
        rows.append({step.moment, step.what, step.detail});
    m_steps->showRows({GS(TextId::MomentColumn), GS(TextId::StepColumn), GS(TextId::DetailColumn)},
                      rows);
}

void DetailsPane::setSendAgainEnabled(bool isEnabled)
{
    if (m_sendAgain)
        m_sendAgain->setEnabled(isEnabled);
}

void DetailsPane::setOptedOut(std::optional<bool> isOptedOut)
{
    m_isOptedOut = isOptedOut.value_or(false);
    m_optOut->setEnabled(isOptedOut.has_value());
    m_optOut->setText(GS(m_isOptedOut ? TextId::OptInButton : TextId::OptOutButton));
}

} // namespace norvane
