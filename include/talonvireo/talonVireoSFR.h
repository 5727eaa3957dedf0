// talonVireoSFR: slanted-edge SFR measurement for camera-module test lines.
//
// Umbrella header: declares the library's whole exported surface.
#pragma once

#include "talonvireo/ChartDescription.h"
#include "talonvireo/ChartMeasurement.h"
#include "talonvireo/ChartRegistration.h"
#include "talonvireo/Export.h"
#include "talonvireo/FrameMeasurement.h"
#include "talonvireo/MeasurementRecords.h"
#include "talonvireo/MemberEdgeLocate.h"
#include "talonvireo/MemberFrameReport.h"
#include "talonvireo/MemberTable.h"
#include "talonvireo/MemberTracker.h"
#include "talonvireo/PixelFormat.h"
#include "talonvireo/ProjectLocate.h"
#include "talonvireo/RawFrameToGrey.h"
#include "talonvireo/RegionSfr.h"
#include "talonvireo/SfrCurve.h"
