// A client's writer in a process of its own:
//
//     drop_file_writer LANGUAGE_FILE FOLDER NAME COUNT
//
// writes so many drop files of one record into FOLDER, one after the other. The messages are "NAME
// 0" and so on; those whose writing was refused are printed, one a line.

#include "NorvaneSMS/queue/QueueFileWriter.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"

#include <QCoreApplication>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

class NotedBoxes : public MessageBoxes
{
public:
    Answer show(const QString &text, Icon, Buttons, const QString &) override
    {
        shown = text;
        return Answer::Ok;
    }

    QString shown;
};

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 5)
        return 2;
    NotedBoxes boxes;
    installMessageBoxes(&boxes);
    goLocalize = std::make_unique<cls_Localize>();
    if (!goLocalize->Init(arguments.at(1), u"ESN"_s))
        return 3;
    QTextStream out(stdout);
    const int count = arguments.at(4).toInt();
    for (int i = 0; i < count; ++i) {
        const QString message = arguments.at(3) + u' ' + QString::number(i);
        boxes.shown.clear();
        WriteSMSFile(u"91-234 56"_s, {QDate(2100, 1, 1), QTime(12, 30, 45), Qt::UTC}, message,
                     arguments.at(2));
        if (!boxes.shown.isEmpty())
            out << message << ": " << boxes.shown << Qt::endl;
    }
    goLocalize.reset();
    return 0;
}
