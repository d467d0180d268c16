// The manual viewer.
#include "app/help_dialog.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QPushButton>
#include <QTextStream>
#include <QVBoxLayout>

#include "app/app_text.h"
#include "app/ruled_text_view.h"
#include "core/language.h"

namespace app {

namespace {

constexpr int kIdsHelpTitle = 1096;

} // namespace

HelpDialog::HelpDialog(int nTab, QWidget *parent)
    : QDialog(parent)
    , m_nTab(nTab)
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
    relabel();
}

QStringList HelpDialog::ManualFolders()
{
    const QString exeDir = QCoreApplication::applicationDirPath();
    return {exeDir + QStringLiteral("/doc"),
            QDir::cleanPath(exeDir + QStringLiteral("/../share/tarnwickmp4/doc"))};
}

QString HelpDialog::LoadManual(int nTab)
{
    const QString name = ToQt(core::ManualFileName(nTab));
    for (const QString &folder : ManualFolders()) {
        QFile file(folder + QLatin1Char('/') + name);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            continue;
        }
        QTextStream in(&file);
        QStringList lines;
        while (!in.atEnd()) {
            lines << in.readLine();
        }
        return lines.join(QLatin1Char('\n'));
    }
    return {};
}

void HelpDialog::relabel()
{
    setWindowTitle(Text(kIdsHelpTitle));
    m_close->setText(Text(kIdsClose));
    m_text->setContents(LoadManual(m_nTab));
}

QString HelpDialog::text() const
{
    return m_text->toPlainText();
}

} // namespace app
