#pragma once

#include <QtGlobal>

#if defined(ozdevice_EXPORTS)
#define OZ_DEVICE_EXPORT Q_DECL_EXPORT
#else
#define OZ_DEVICE_EXPORT Q_DECL_IMPORT
#endif
