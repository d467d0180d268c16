// Entry point of tarnwickmp4: the window, with the project (or video) named on the command line.
#include <QApplication>
#include <QGuiApplication>
#include <QLocale>
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
    // The desktop entry's name, so that the window is matched to it and its icon.
    QGuiApplication::setDesktopFileName(QStringLiteral("io.github.brindlemoor.TarnwickMP4"));
    workspace::HostOptions options;
    options.systemLanguage =
        QLocale::system().name().replace(QLatin1Char('_'), QLatin1Char('-')).toStdString();
    app::QtSettingsStore store;
    app::MainWindow window(store, options);
    // Qt has taken its own options out of the arguments; the model picks the file from the rest.
    window.startUp(QApplication::arguments().mid(1));
    return QApplication::exec();
}
