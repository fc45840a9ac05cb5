#include "NorvaneHistory/ComposeSheet.h"

#include "foundation/Globals.h"
#include "foundation/TextId.h"
#include "foundation/ui/MessageEdit.h"
#include "foundation/ui/PhoneEdit.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace norvane {

using namespace Qt::StringLiterals;

ComposeSheet::ComposeSheet(const QString &phone, const QString &text, QWidget *parent)
    : QDialog(parent), m_phone(new PhoneEdit(this)), m_text(new MessageEdit(this)),
      m_length(new QLabel(this))
{
    constexpr QSize size(380, 240);
    setObjectName(u"ComposeSheet"_s);
    setWindowTitle(GS(TextId::ComposeTitle));
    m_phone->setObjectName(u"txtPhone"_s);
    m_phone->setText(phone);
    m_text->setObjectName(u"txtMessage"_s);
    m_text->setAccessibleName(GS(TextId::MessageName));
    m_length->setObjectName(u"lblLength"_s);

    auto *const phoneLabel = new QLabel(GS(TextId::PhoneLabel), this);
    phoneLabel->setBuddy(m_phone);
    m_phone->setAccessibleName(GS(TextId::PhoneLabel).remove(u'&'));
    auto *const buttons = new QDialogButtonBox(this);
    m_send = buttons->addButton(GS(TextId::SendButton), QDialogButtonBox::AcceptRole);
    m_send->setObjectName(u"btnSend"_s);
    buttons->addButton(GS(TextId::CancelButton), QDialogButtonBox::RejectRole)
        ->setObjectName(u"btnCancel"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(phoneLabel);
    layout->addWidget(m_phone);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_length);
    layout->addWidget(buttons);

    connect(m_text, &MessageEdit::changed, this, &ComposeSheet::showLength);
    connect(m_phone, &QLineEdit::textChanged, this, &ComposeSheet::showLength);
    m_text->setText(text);
    showLength();
    m_text->setFocus();
    resize(size);
}

QString ComposeSheet::phone() const
{
    return m_phone->text();
}

QString ComposeSheet::text() const
{
    return m_text->text();
}

void ComposeSheet::showLength()
{
    const int length = m_text->textLength();
    m_length->setText(GS(TextId::CharacterCount, length, MessageEdit::maxLength));
    m_send->setEnabled(length > 0 && !m_phone->text().trimmed().isEmpty());
}

} // namespace norvane
