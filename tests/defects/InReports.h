#pragma once

#include "DefectTest.h"

/// Defects of the reports that the switches -e, -f, -t and -x provoke, in steps that take the harness's
/// lines.
class InReports : public Defect20 {
 protected:
    /// With -e: NEXT_EVENT for "nt1".
    void AsksForADamagedEvent(Here here = Here::current());

    /// With -e, behind the report, to the end.
    void ExportsTheTrueEvent(Here here = Here::current());

    /// With -f, -t or -x: the request for Video.ts with the fault that is named so in the log.
    void RequestsVideoWithFault(const std::string& fault, Here here = Here::current());

    /// With -f, behind the first report.
    void DamagesTheFileName(Here here = Here::current());

    /// With -f, behind the second report, by when the switch is spent.
    void RequestsTheTrueFile(Here here = Here::current());

    /// With -t, behind the report.
    void RequestsTheFileAgain(Here here = Here::current());

    /// With -f, -t or -x, to the end.
    void ExportsTheRest(Here here = Here::current());
};
