#include "NorvaneSMS/console/BulkTemplate.h"

QString FillTemplate(QString message, const QStringList &fields)
{
    for (qsizetype number = 0; number < fields.size(); ++number)
        message.replace(u'%' + QString::number(number), fields.at(number));
    return message;
}
