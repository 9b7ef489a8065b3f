#pragma once

#include <QtGlobal>

#if defined(ozsupport_EXPORTS)
#define OZ_SUPPORT_EXPORT Q_DECL_EXPORT
#else
#define OZ_SUPPORT_EXPORT Q_DECL_IMPORT
#endif
