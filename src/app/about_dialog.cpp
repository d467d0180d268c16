// The about box.
#include "app/about_dialog.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/app_text.h"

namespace app {

AboutDialog::AboutDialog(const workspace::AboutContent &about, QWidget *parent)
    : QDialog(parent)
    , m_version(new QLabel(this))
    , m_copyright(new QLabel(this))
    , m_close(new QPushButton(this))
{
    setObjectName(QStringLiteral("aboutDialog"));
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    m_version->setObjectName(QStringLiteral("version"));
    m_copyright->setObjectName(QStringLiteral("copyright"));
    m_close->setObjectName(QStringLiteral("close"));
    m_close->setDefault(true);
    auto *icon = new QLabel(this);
    icon->setPixmap(QApplication::windowIcon().pixmap(48, 48));
    auto *texts = new QVBoxLayout;
    texts->addWidget(m_version);
    texts->addWidget(m_copyright);
    auto *top = new QHBoxLayout;
    top->addWidget(icon, 0, Qt::AlignTop);
    top->addLayout(texts, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_close);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(buttons);
    setMinimumWidth(340);
    connect(m_close, &QPushButton::clicked, this, &QDialog::accept);
    relabel(about);
}

void AboutDialog::relabel(const workspace::AboutContent &about)
{
    setWindowTitle(ToQt(about.title));
    m_version->setText(ToQt(about.version));
    m_copyright->setText(ToQt(about.copyright));
    m_close->setText(Text(kIdsClose));
}

QString AboutDialog::versionText() const
{
    return m_version->text();
}

QString AboutDialog::copyrightText() const
{
    return m_copyright->text();
}

} // namespace app
