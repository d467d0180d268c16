// The information viewer.
#include "app/info_dialog.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include "app/app_text.h"
#include "app/ruled_text_view.h"
#include "workspace/tab_base.h"
#include "workspace/tab_scene.h"

namespace app {

namespace {

constexpr int kIdsChooseFor = 3097;
constexpr int kIdsChooseFile = 1100;

} // namespace

InfoDialog::InfoDialog(
    workspace::CTarnwickTab &tab, int nKind, int nTitleId, const QString &file, QWidget *parent)
    : QDialog(parent)
    , m_tab(tab)
    , m_nKind(nKind)
    , m_nTitleId(nTitleId)
    , m_file(file)
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
    m_chooser = [this](const QString &start) {
        const QString title =
            QStringLiteral("%1 \"%2\"").arg(Text(kIdsChooseFor), Text(m_nTitleId));
        return QFileDialog::getOpenFileName(
            this, title, start, QtFileFilter(workspace::kVideoFilter));
    };
    relabel();
}

void InfoDialog::setFileChooser(std::function<QString(const QString &)> chooser)
{
    m_chooser = std::move(chooser);
}

void InfoDialog::relabel()
{
    setWindowTitle(Text(m_nTitleId));
    m_choose->setText(Text(kIdsChooseFile));
    m_play->setText(Text(kIdsOpenInPlayer));
    m_close->setText(Text(kIdsClose));
}

bool InfoDialog::start()
{
    const bool bAsk = m_nKind != 1 || m_file.isEmpty();
    if ((bAsk && !chooseFile()) || !beginProbe()) {
        deleteLater();
        return false;
    }
    return true;
}

bool InfoDialog::chooseFile()
{
    const QString chosen = m_chooser(m_file);
    if (chosen.isEmpty()) {
        return false;
    }
    m_file = chosen;
    return true;
}

bool InfoDialog::beginProbe()
{
    // The tab runs one job at a time; its own job is not stopped for a look at a file.
    if (m_bProbing || m_tab.IsJobRunning()) {
        return false;
    }
    m_bProbing = true;
    m_tab.StartProbe(FromQt(m_file), m_nKind);
    checkProbe();
    return true;
}

void InfoDialog::checkProbe()
{
    const workspace::JobReport &job = m_tab.LastJob();
    if (!m_bProbing || m_tab.IsJobRunning() || job.nJob != workspace::kJobProbe || !job.bFinished) {
        return;
    }
    m_bProbing = false;
    const workspace::ProbeReport &probe = m_tab.LastProbe();
    const bool bGood = job.nResult == 0 && probe.nResult == 0;
    if (bGood) {
        m_text->setContents(ToQt(probe.text));
    }
    if (!m_bShownOnce) {
        if (!bGood) {
            emit probeEnded(false);
            deleteLater();
            return;
        }
        m_bShownOnce = true;
        if (parentWidget() != nullptr) {
            const QRect owner = parentWidget()->geometry();
            move(owner.center() - rect().center());
        }
        show();
    }
    emit probeEnded(true);
}

void InfoDialog::chooseAnother()
{
    if (chooseFile()) {
        beginProbe();
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
