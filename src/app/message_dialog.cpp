// The yes/no question of the program.
#include "app/message_dialog.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "app/app_text.h"

namespace app {

namespace {

// The string id of the dialog's title.
constexpr int kIdsConfirmTitle = 3119;

} // namespace

MessageDialog::MessageDialog(const QString &message, QWidget *parent)
    : QDialog(parent)
    , m_message(new QLabel(message, this))
    , m_yes(new QPushButton(Text(kIdsYes), this))
    , m_no(new QPushButton(Text(kIdsNo), this))
{
    setObjectName(QStringLiteral("messageDialog"));
    setWindowTitle(Text(kIdsConfirmTitle));
    setWindowIcon(QApplication::windowIcon());
    m_message->setObjectName(QStringLiteral("message"));
    m_message->setWordWrap(true);
    m_message->setTextFormat(Qt::PlainText);
    m_yes->setObjectName(QStringLiteral("yes"));
    m_no->setObjectName(QStringLiteral("no"));
    m_yes->setDefault(true);

    auto *icon = new QLabel(this);
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxQuestion).pixmap(size, size));
    auto *top = new QHBoxLayout;
    top->addWidget(icon, 0, Qt::AlignTop);
    top->addWidget(m_message, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_yes);
    buttons->addWidget(m_no);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(buttons);
    setMinimumWidth(320);

    connect(m_yes, &QPushButton::clicked, this, [this] { done(kYes); });
    connect(m_no, &QPushButton::clicked, this, [this] { done(kNo); });
}

int MessageDialog::ask(QWidget *parent, const QString &message)
{
    MessageDialog dialog(message, parent);
    const int answer = dialog.exec();
    return answer == kYes ? kYes : kNo;
}

QString MessageDialog::message() const
{
    return m_message->text();
}

} // namespace app
