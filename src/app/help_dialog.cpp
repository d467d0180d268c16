// The manual viewer.
#include "app/help_dialog.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/app_text.h"
#include "app/ruled_text_view.h"

namespace app {

HelpDialog::HelpDialog(const workspace::HelpContent &help, QWidget *parent)
    : QDialog(parent)
    , m_nTab(help.nTab)
    , m_text(new RuledTextView(this))
    , m_close(new QPushButton(this))
{
    setObjectName(QStringLiteral("helpDialog"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setWindowIcon(QApplication::windowIcon());
    m_close->setObjectName(QStringLiteral("close"));
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_close);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_text, 1);
    layout->addLayout(buttons);
    resize(640, 520);
    connect(m_close, &QPushButton::clicked, this, &QDialog::close);
    relabel(help);
}

void HelpDialog::relabel(const workspace::HelpContent &help)
{
    m_nTab = help.nTab;
    setWindowTitle(ToQt(help.title));
    m_close->setText(Text(kIdsClose));
    m_text->setContents(ToQt(help.text));
}

QString HelpDialog::text() const
{
    return m_text->toPlainText();
}

} // namespace app
