#include <oz/models/DisplayModel.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::models;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const DisplayModel displays;
    for (int row = 0; row < displays.count(); ++row) {
        const QVariantMap display = displays.record(row);
        qInfo() << display[QStringLiteral("displayName")].toString()
                << "attached:" << display[QStringLiteral("attached")].toBool();
    }
    QObject::connect(&displays, &DisplayModel::dataChanged, [](const QModelIndex &changed) {
        qInfo() << "changed:" << changed.data().toString();
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

// Over the simulated phone, this prints
//     "panel" attached: true
// and after `ozdevice sim display attach 1`
//     "hdmi" attached: false
//     changed: "hdmi"
