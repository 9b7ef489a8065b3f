#include <oz/models/DataProfileModel.hpp>

#include <QCoreApplication>
#include <QDebug>

using namespace oz::models;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const DataProfileModel profiles;
    for (int row = 0; row < profiles.count(); ++row)
        qInfo() << profiles.index(row).data().toString();
}

// Over the simulated phone, this prints
//     "enterprise"
//     "internet"
//     "legacy"
//     "mms"
//     "tethering"
