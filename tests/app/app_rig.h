// What the window tests share: one QApplication on a virtual X display per test program, a
// settings file of the test's own, screenshots under the build tree, and answering the
// program's yes/no question from a timer.
#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPushButton>
#include <QTimer>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "app/message_dialog.h"
#include "support/test_support.h"
#include "support/xvfb.h"

namespace apptest {

// The application of the test program: an Xvfb display and a QApplication on it, made at the
// first call and ended when the program ends. The settings go to a folder of the test program's
// own (XDG_CONFIG_HOME).
inline QApplication &TestApp()
{
    static testsupport::TempDir configDir;
    static testsupport::XvfbDisplay display;
    static int argc = 1;
    static char name[] = "tarnwickmp4-test";
    static char *argv[] = {name, nullptr};
    // Never deleted: Qt's own statics are gone by the time a static here would be destroyed.
    static QApplication *application = [] {
        setenv("XDG_CONFIG_HOME", configDir.path().c_str(), 1);
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        auto *made = new QApplication(argc, argv);
        std::setlocale(LC_NUMERIC, "C");
        return made;
    }();
    return *application;
}

// Serves the event loop until done() holds (tested every 10 ms); false when it did not come
// within the time a test may take.
inline bool RunEventsUntil(const std::function<bool()> &done, int nSeconds = 120)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > nSeconds * 1000) {
            return false;
        }
        QApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

// Answers every yes/no question that appears from now on with nAnswer (6 yes, 7 no) by clicking
// its button, counting them in *pAsked, until the returned timer is deleted.
inline std::unique_ptr<QTimer> AnswerQuestions(int nAnswer, int *pAsked)
{
    auto timer = std::make_unique<QTimer>();
    QObject::connect(timer.get(), &QTimer::timeout, [nAnswer, pAsked] {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *dialog = qobject_cast<app::MessageDialog *>(widget);
            if (dialog != nullptr && dialog->isVisible()) {
                ++*pAsked;
                (nAnswer == app::MessageDialog::kYes ? dialog->yesButton() : dialog->noButton())
                    ->click();
            }
        }
    });
    timer->start(20);
    return timer;
}

// Where a screenshot of the test goes: <build>/screenshots/<name>.png.
inline QString ScreenshotPath(const std::string &name)
{
    const std::string folder = std::string(TW_BINARY_DIR) + "/screenshots";
    std::filesystem::create_directories(folder);
    return QString::fromStdString(folder + "/" + name + ".png");
}

// How many different colours the picture holds (a blank or uniform picture has one).
inline int ColourCount(const QImage &image, int nEnough = 64)
{
    std::set<QRgb> colours;
    for (int y = 0; y < image.height(); y += 2) {
        for (int x = 0; x < image.width(); x += 2) {
            colours.insert(image.pixel(x, y));
            if (static_cast<int>(colours.size()) >= nEnough) {
                return nEnough;
            }
        }
    }
    return static_cast<int>(colours.size());
}

} // namespace apptest
