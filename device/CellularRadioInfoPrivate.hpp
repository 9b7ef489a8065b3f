#pragma once

#include "ChangeTable.hpp"

#include <oz/device/CellularRadioInfo.hpp>

namespace oz {
class PpsObject;
}

namespace oz::device {

class CellularRadioInfoPrivate : public QObject
{
    Q_OBJECT

public:
    /*! One reading of the public object. */
    struct PublicState
    {
        bool poweredOn = false;
        CellularTechnology::Types technologies;
        CellularService::Types services;
        CellularBand::Types bands;
        CellularTechnology::Types activeTechnologies;
        int networkCount = 0;
    };

    /*! One reading of the data object. */
    struct DataState
    {
        bool dataEnabled = false;
        bool dataRoaming = false;
    };

    struct Values : PublicState, DataState
    {
        CellularTechnology::Types enabledTechnologies;
    };

    explicit CellularRadioInfoPrivate(CellularRadioInfo *q);

    [[nodiscard]] const Values &values() const { return *m_values; }

private Q_SLOTS:
    void updateState();

private:
    [[nodiscard]] PublicState readPublicState();
    [[nodiscard]] CellularTechnology::Types readPersistentState();
    [[nodiscard]] DataState readDataState();

    CellularRadioInfo *q;
    oz::PpsObject *m_publicObject;
    oz::PpsObject *m_persistentObject;
    oz::PpsObject *m_dataObject;
    Announced<Values> m_values;
};

} // namespace oz::device
