#include "NorvaneSMS/console/BulkTemplate.h"

#include "NorvaneSMS/import/readers/RecipientReaders.h"
#include "foundation/Normalisation.h"
#include "foundation/clsCollection.h"

namespace norvane {

QString FillTemplate(QString message, const QStringList &fields)
{
    for (qsizetype number = 0; number < fields.size(); ++number)
        message.replace(u'%' + QString::number(number), fields.at(number));
    return message;
}

SMSList BulkList(const QString &text, const clsCollection &recipients)
{
    const QString message = NormalizeSMSText(false, text);
    SMSList list;
    const qint32 count = recipients.getCount();
    for (qint32 position = 1; position <= count; ++position) {
        const QStringList fields = recipients.Item(position).toString().split(u'|');
        const QString phone = CleanNumber(fields.first());
        if (!phone.isEmpty())
            list.Add(phone, FillTemplate(message, fields));
    }
    return list;
}

} // namespace norvane
