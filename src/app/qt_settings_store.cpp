// The per-user settings store of the window.
#include "app/qt_settings_store.h"

#include <QByteArray>
#include <QSettings>

#include "core/app_settings.h"

namespace app {

namespace {

QString RecentKey(size_t index)
{
    return QStringLiteral("%1/File%2")
        .arg(QLatin1String(core::kRecentFilesSection))
        .arg(static_cast<int>(index) + 1);
}

QString RecordKey()
{
    return QStringLiteral("%1/%2").arg(QLatin1String(core::kSettingsSection),
                                       QLatin1String(core::kSettingsEntry));
}

} // namespace

QtSettingsStore::QtSettingsStore()
    : m_settings(std::make_unique<QSettings>(QSettings::IniFormat,
                                             QSettings::UserScope,
                                             QLatin1String(core::kSettingsOrganisation),
                                             QLatin1String(core::kSettingsApplication)))
{
}

QtSettingsStore::QtSettingsStore(const std::string &path)
    : m_settings(std::make_unique<QSettings>(QString::fromStdString(path), QSettings::IniFormat))
{
}

QtSettingsStore::~QtSettingsStore() = default;

std::vector<uint8_t> QtSettingsStore::ReadRecord() const
{
    const QByteArray bytes = m_settings->value(RecordKey()).toByteArray();
    return std::vector<uint8_t>(bytes.begin(), bytes.end());
}

void QtSettingsStore::WriteRecord(const std::vector<uint8_t> &bytes)
{
    m_settings->setValue(RecordKey(),
                         QByteArray(reinterpret_cast<const char *>(bytes.data()),
                                    static_cast<qsizetype>(bytes.size())));
    m_settings->sync();
}

std::vector<std::string> QtSettingsStore::ReadRecentFiles() const
{
    std::vector<std::string> entries;
    for (size_t i = 0; i < core::kRecentFileCount; ++i) {
        entries.push_back(m_settings->value(RecentKey(i)).toString().toStdString());
    }
    while (!entries.empty() && entries.back().empty()) {
        entries.pop_back();
    }
    return entries;
}

void QtSettingsStore::WriteRecentFiles(const std::vector<std::string> &entries)
{
    for (size_t i = 0; i < core::kRecentFileCount; ++i) {
        if (i < entries.size() && !entries[i].empty()) {
            m_settings->setValue(RecentKey(i), QString::fromStdString(entries[i]));
        } else {
            m_settings->remove(RecentKey(i));
        }
    }
    m_settings->sync();
}

void QtSettingsStore::Flush()
{
    m_settings->sync();
}

std::string QtSettingsStore::FilePath() const
{
    return m_settings->fileName().toStdString();
}

} // namespace app
