// Texts of the window.
#include "app/app_text.h"

#include <QStringList>

#include "core/language.h"

namespace app {

QString Text(int id)
{
    return ToQt(core::LoadStringById(id));
}

QString ToQt(const std::string &text)
{
    return QString::fromStdString(text);
}

std::string FromQt(const QString &text)
{
    return text.toStdString();
}

QString QtFileFilter(const std::string &filter)
{
    const QStringList parts = ToQt(filter).split(QLatin1Char('|'));
    QStringList filters;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        if (parts[i].isEmpty()) {
            break;
        }
        QString name = parts[i];
        const int open = name.indexOf(QLatin1Char('('));
        if (open >= 0) {
            name = name.left(open).trimmed();
        }
        QString patterns = parts[i + 1];
        patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
        filters << QStringLiteral("%1 (%2)").arg(name, patterns);
    }
    return filters.join(QStringLiteral(";;"));
}

} // namespace app
