#include "foundation/ui/EngineWaitNotice.h"

#include "foundation/Globals.h"
#include "foundation/TextId.h"
#include "foundation/ui/FormSetUp.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 24; // pixels around the text

/// It closes with the wait and not before.
class NoticeWindow : public QWidget
{
public:
    NoticeWindow()
    {
        setObjectName(u"EngineWaitNotice"_s);
        setWindowTitle(u"Norvane SMS"_s);
        setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
        // The console's own window comes after it: its end isn't the program's.
        setAttribute(Qt::WA_QuitOnClose, false);
        auto *const layout = new QVBoxLayout(this);
        layout->setContentsMargins(margin, margin, margin, margin);
        layout->addWidget(new QLabel(GS(TextId::EngineNotReady), this));
        layout->setSizeConstraint(QLayout::SetFixedSize);
    }

protected:
    void closeEvent(QCloseEvent *event) override { event->ignore(); }
};

bool isAnyWindowShown()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.cbegin(), windows.cend(),
                       [](const QWidget *window) { return window->isVisible(); });
}

} // namespace

void EngineWaitNotice::waiting(qint64 milliseconds)
{
    if (milliseconds < m_quietFor)
        return;
    if (!m_pointer)
        show();
    // A console's window that is already shown must get no events: the call that waits for the
    // engine runs no event loop. Before that window exists, events can only concern the notice.
    if (m_window)
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void EngineWaitNotice::show()
{
    m_pointer.emplace();
    if (isAnyWindowShown())
        return;
    m_window = std::make_unique<NoticeWindow>();
    m_window->adjustSize();
    CenterForm(m_window.get());
    m_window->show();
}

void EngineWaitNotice::ended()
{
    m_window.reset();
    m_pointer.reset();
}

} // namespace norvane
