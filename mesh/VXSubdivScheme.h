// VelmarBase: mesh processing.
#pragma once

/// The rules by which a mesh is subdivided through OpenSubdiv. The value is recorded and told to the delegate; the
/// refiner is always built with Catmull-Clark rules.
enum E_SubdivScheme : int
{
    kSubdivSchemeOther = 0, ///< what objects ask for
    kSubdivSchemeDefault = 1,
};
