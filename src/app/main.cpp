// Entry point of tarnwickmp4: the window, with the project named on the command line.
#include <QApplication>
#include <QStringList>

#include <clocale>

#include "app/main_window.h"
#include "app/qt_settings_store.h"

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    // Numbers in command lines and files are written with a point, whatever the user's locale;
    // QApplication has just set the locale from the environment.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QStringLiteral("TarnwickMP4"));
    QApplication::setOrganizationName(QStringLiteral("Brindlemoor"));
    // The first argument that is not an option is the project; the rest are Qt's or ignored.
    QString project;
    const QStringList arguments = QApplication::arguments();
    for (int i = 1; i < arguments.size(); ++i) {
        if (!arguments[i].startsWith(QLatin1Char('-')) && project.isEmpty()) {
            project = arguments[i];
        }
    }
    app::QtSettingsStore store;
    app::MainWindow window(store);
    window.startUp(project);
    return QApplication::exec();
}
