#include "mesh/VXTangentThread.h"

#include "mesh/VXGeom.h"

void VXTangentThread::DoBegin()
{
    if (mGeom)
        mGeom->ComputeTangents();
}
