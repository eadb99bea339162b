#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>

#include "gui/main_window.h"
#include "gui/widgets.h"

// kinfolio [FOLDER]: the window, opening FOLDER at once when given (as a
// file manager's "Open With" does), else the folder of the last run.
int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("Kinfolio");
    QApplication::setApplicationVersion(KINFOLIO_VERSION);
    QApplication::setDesktopFileName("app.kinfolio.Kinfolio");
    QApplication::setWindowIcon(QIcon::fromTheme("app.kinfolio.Kinfolio"));

    QCommandLineParser options;
    options.setApplicationDescription("Turn your relationship records into one clear PDF.");
    options.addHelpOption();
    options.addVersionOption();
    options.addPositionalArgument("folder", "The materials folder to open.", "[FOLDER]");
    options.process(app);

    kinfolio::gui::MainWindow window(kinfolio::AppServices::standard(), kinfolio::SettingsStore());
    window.show();
    window.start();
    if (!options.positionalArguments().isEmpty())
        window.openFolder(options.positionalArguments().front());
    return QApplication::exec();
}
