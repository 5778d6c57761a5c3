/// The status numbers of the numerics, 24001 to 24004, and their error keys.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// A singular value decomposition does not converge.
inline constexpr SInt32 NR_NoSVDConvergenceErr = 24001;
/// NR_GetArrayMax, NR_GetMinimumFrom4 and NR_GetMinimumFrom5: there is no clear extremum.
inline constexpr SInt32 NR_NoClearExtrErr = 24002;
/// NR_gaussjSPL and NR_SolveLinEq2: the matrix is singular.
inline constexpr SInt32 NR_SingMatrixErr = 24003;
/// NR_FindPolyApprToFuncOnInterval and its double twin: no polynomial comes near enough.
inline constexpr SInt32 NR_LackingPrecisionErr = 24004;

/// Sets the constant key of a code of this library; "GL UnknownErr" if it has none. A null
/// `outKey` takes nothing.
void NR_GetLibErrorKey(SInt32 code, CFStringRef* outKey);
