#include <oz/PpsObject.hpp>

#include <QCoreApplication>
#include <QDebug>

using oz::PpsObject;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    PpsObject card(QStringLiteral("/pps/system/filesystem/removable/sdcard?f=mounted"));
    if (!card.open(oz::PpsOpenMode::Subscribe)) {
        qWarning() << card.errorString();
        return 1;
    }
    QObject::connect(&card, &PpsObject::readyRead, [&] {
        const QVariantMap attributes = PpsObject::decode(card.read())[QStringLiteral("@sdcard")].toMap();
        const bool mounted = attributes[QStringLiteral("mounted")].toBool();
        qInfo() << "mounted:" << mounted;
        if (!mounted)
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     mounted: true
// and after `ozdevice sim sdcard remove`
//     mounted: false
