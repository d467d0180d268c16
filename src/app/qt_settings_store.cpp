// The per-user settings store of the window.
#include "app/qt_settings_store.h"

#include <QByteArray>
#include <QSettings>

#include "core/app_settings.h"

namespace app {

namespace {

QString Key(const std::string &section, const std::string &entry)
{
    return QString::fromStdString(section) + QLatin1Char('/') + QString::fromStdString(entry);
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

std::optional<std::vector<uint8_t>> QtSettingsStore::ReadBytes(const std::string &section,
                                                               const std::string &entry) const
{
    const QVariant value = m_settings->value(Key(section, entry));
    if (!value.isValid() || value.typeId() != QMetaType::QByteArray) {
        return std::nullopt;
    }
    const QByteArray bytes = value.toByteArray();
    return std::vector<uint8_t>(bytes.begin(), bytes.end());
}

std::optional<std::string> QtSettingsStore::ReadText(const std::string &section,
                                                     const std::string &entry) const
{
    const QVariant value = m_settings->value(Key(section, entry));
    if (!value.isValid() || value.typeId() == QMetaType::QByteArray) {
        return std::nullopt;
    }
    return value.toString().toStdString();
}

bool QtSettingsStore::WriteBytes(const std::string &section,
                                 const std::string &entry,
                                 const std::vector<uint8_t> &value)
{
    m_settings->setValue(Key(section, entry),
                         QByteArray(reinterpret_cast<const char *>(value.data()),
                                    static_cast<qsizetype>(value.size())));
    return Sync();
}

bool QtSettingsStore::WriteText(const std::string &section,
                                const std::string &entry,
                                const std::string &value)
{
    m_settings->setValue(Key(section, entry), QString::fromStdString(value));
    return Sync();
}

bool QtSettingsStore::RemoveEntry(const std::string &section, const std::string &entry)
{
    m_settings->remove(Key(section, entry));
    return Sync();
}

bool QtSettingsStore::Sync()
{
    m_settings->sync();
    return m_settings->status() == QSettings::NoError;
}

std::string QtSettingsStore::FilePath() const
{
    return m_settings->fileName().toStdString();
}

} // namespace app
