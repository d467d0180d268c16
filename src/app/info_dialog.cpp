// The information viewer.
#include "app/info_dialog.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QPointer>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include "app/app_text.h"
#include "app/ruled_text_view.h"
#include "core/language.h"
#include "workspace/host_model.h"

namespace app {

namespace {

constexpr int kIdsChooseFile = 1100;

} // namespace

InfoDialog::InfoDialog(workspace::HostModel &host,
                       const workspace::InformationRequest &request,
                       QWidget *parent)
    : QDialog(parent)
    , m_host(host)
    , m_request(request)
    , m_text(new RuledTextView(this))
    , m_choose(new QPushButton(this))
    , m_play(new QPushButton(this))
    , m_close(new QPushButton(this))
{
    setObjectName(QStringLiteral("infoDialog"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setWindowIcon(QApplication::windowIcon());
    m_choose->setObjectName(QStringLiteral("chooseFile"));
    m_play->setObjectName(QStringLiteral("openInPlayer"));
    m_close->setObjectName(QStringLiteral("close"));
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_choose);
    buttons->addWidget(m_play);
    buttons->addWidget(m_close);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_text, 1);
    layout->addLayout(buttons);
    resize(640, 520);
    connect(m_choose, &QPushButton::clicked, this, &InfoDialog::chooseAnother);
    connect(m_play, &QPushButton::clicked, this, &InfoDialog::openInPlayer);
    connect(m_close, &QPushButton::clicked, this, &QDialog::close);
    m_chooser = [this](const QString &title, const QString &start, const QString &filter) {
        return QFileDialog::getOpenFileName(this, title, start, filter);
    };
    relabel();
}

void InfoDialog::setFileChooser(Chooser chooser)
{
    m_chooser = std::move(chooser);
}

void InfoDialog::relabel()
{
    m_request.title = core::LoadStringById(m_request.nTitleId);
    m_request.chooserTitle =
        core::LoadStringById(workspace::kIdsChooseFileFor) + " \"" + m_request.title + "\"";
    setWindowTitle(ToQt(m_request.title));
    m_choose->setText(Text(kIdsChooseFile));
    m_play->setText(Text(kIdsOpenInPlayer));
    m_close->setText(Text(kIdsClose));
}

QString InfoDialog::chooseFile(const QString &start)
{
    return m_chooser(ToQt(m_request.chooserTitle), start, QtFileFilter(m_request.filter));
}

bool InfoDialog::start()
{
    const QString file =
        m_request.bAskFile ? chooseFile(ToQt(m_request.startFile)) : ToQt(m_request.startFile);
    if (file.isEmpty()) {
        deleteLater();
        return false;
    }
    QPointer<InfoDialog> self(this);
    const bool bRead = read(file);
    if (!self) {
        return false;
    }
    if (!bRead) {
        deleteLater();
        return false;
    }
    if (parentWidget() != nullptr) {
        const QRect owner = parentWidget()->geometry();
        move(owner.center() - rect().center());
    }
    show();
    return true;
}

bool InfoDialog::read(const QString &file)
{
    // The window's loop runs while the probe does: the dialog may go meanwhile.
    QPointer<InfoDialog> self(this);
    const workspace::InformationResult result = m_host.RunInformation(m_request, FromQt(file));
    if (!self || !result.bOk) {
        return false;
    }
    m_file = file;
    m_text->setContents(ToQt(result.text));
    return true;
}

void InfoDialog::chooseAnother()
{
    const QString file = chooseFile(m_file);
    if (!file.isEmpty()) {
        read(file);
    }
}

void InfoDialog::openInPlayer()
{
    if (!m_file.isEmpty()) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(m_file));
    }
}

QString InfoDialog::text() const
{
    return m_text->toPlainText();
}

} // namespace app
