// The whole public interface of ZEF.
#ifndef ZEF_ZEF_H
#define ZEF_ZEF_H

#include "CallReport.h"
#include "CancelToken.h"
#include "Mesh.h"
#include "Point3.h"
#include "ProgressBase.h"
#include "Vector3.h"
#include "ZefBugException.h"
#include "ZefCancelledException.h"
#include "ZefRefusedException.h"
#include "autoReconstruct.h"
#include "checkMesh.h"
#include "compareMeshes.h"
#include "estimateMemory.h"
#include "finishSurface.h"
#include "meshHoles.h"
#include "remesh.h"
#include "sourcePoints.h"
#include "testDataGenerators.h"
#include "zef_api_functions.h"
#include "zef_calls.h"
#include "zef_formats.h"
#include "zef_messages.h"

#endif
