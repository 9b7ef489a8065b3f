#pragma once

#include <QtGlobal>

#if defined(ozmodels_EXPORTS)
#define OZ_MODELS_EXPORT Q_DECL_EXPORT
#else
#define OZ_MODELS_EXPORT Q_DECL_IMPORT
#endif
