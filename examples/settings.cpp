#include <vex/SettingsInterface.h>

#include <QCoreApplication>
#include <QSettings>
#include <QTextStream>

using namespace Qt::StringLiterals;

/// A server that an application reads spectra from.
class Server : public vex::SettingsInterface
{
public:
    Server(QString file, QString name)
        : m_file(std::move(file))
        , m_key("servers/"_L1 + name)
    {
    }

    QString address;

protected:
    void writeSettings(QSettings &settings) const override { settings.setValue(m_key, address); }
    void readSettings(QSettings &settings) override { address = settings.value(m_key).toString(); }
    QString defaultFilePath() const override { return m_file; }

private:
    QString m_file;
    QString m_key;
};

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QTextStream errors(stderr);
    const QStringList arguments = application.arguments();
    if (arguments.size() != 4) {
        errors << "usage: " << arguments.value(0) << " SETTINGS-FILE SERVER ADDRESS\n";
        return 2;
    }
    Server server(arguments[1], arguments[2]);
    server.address = arguments[3];
    if (const vex::Error error = server.saveChecked(); error.hasError()) {
        errors << error.message() << '\n';
        for (const QString &reason : error.warnings())
            errors << reason << '\n';
        return 1;
    }
    server.load();
    QTextStream(stdout) << "saved: " << server.address << '\n';
    return 0;
}
