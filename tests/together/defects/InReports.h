#pragma once

#include "tests/together/defects/DefectTest.h"

/// Defects in the reports that the switches -e, -f, -t and -x provoke, in steps that take the harness's
/// lines.
class InReports : public Defect20 {
 protected:
    /// With -e: NEXT_EVENT for "nt1".
    void AsksForADamagedEvent(Here here = Here::current());

    /// With -e, after the report, to the end.
    void ExportsTheTrueEvent(Here here = Here::current());

    /// With -f, -t or -x: the request for Video.ts with the fault that the log calls this.
    void RequestsVideoWithFault(const std::string& fault, Here here = Here::current());

    /// With -f, after the first report.
    void DamagesTheFileName(Here here = Here::current());

    /// With -f, after the second report, when the switch is used up.
    void RequestsTheTrueFile(Here here = Here::current());

    /// With -t, after the report.
    void RequestsTheFileAgain(Here here = Here::current());

    /// With -f, -t or -x, to the end.
    void ExportsTheRest(Here here = Here::current());
};
