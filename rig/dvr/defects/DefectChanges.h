#pragma once

#include "rig/dvr/defects/Defect.h"

namespace rig::dvr {

/// What each kind of defect does to a message; see DefectKinds for the words. Each returns whether there was
/// something to change: a defect that had nothing to change waits for the next message.
bool WrongReid(Outgoing& outgoing, const DefectContext& context);
bool MissingReid(Outgoing& outgoing, const DefectContext& context);
bool CaseReid(Outgoing& outgoing, const DefectContext& context);
bool WrongFile(Outgoing& outgoing, const DefectContext& context);
bool MissingFile(Outgoing& outgoing, const DefectContext& context);
bool CaseFile(Outgoing& outgoing, const DefectContext& context);
bool OtherFile(Outgoing& outgoing, const DefectContext& context);
bool MissingSource(Outgoing& outgoing, const DefectContext& context);
bool MissingHash(Outgoing& outgoing, const DefectContext& context);
bool MissingLength(Outgoing& outgoing, const DefectContext& context);
bool NewHash(Outgoing& outgoing, const DefectContext& context);
bool AcceptEvent(Outgoing& outgoing, const DefectContext& context);
bool AcceptFile(Outgoing& outgoing, const DefectContext& context);
bool NoException(Outgoing& outgoing, const DefectContext& context);
bool NoAnswer(Outgoing& outgoing, const DefectContext& context);
bool Double(Outgoing& outgoing, const DefectContext& context);
bool Silence(Outgoing& outgoing, const DefectContext& context);
bool UnaskedInvalidEvent(Outgoing& outgoing, const DefectContext& context);
bool UnaskedTransportException(Outgoing& outgoing, const DefectContext& context);
bool UnaskedSoftwareUpdateConfirm(Outgoing& outgoing, const DefectContext& context);
bool UnaskedConfigurationUpdateError(Outgoing& outgoing, const DefectContext& context);
bool UnknownMessage(Outgoing& outgoing, const DefectContext& context);
bool CaseReq(Outgoing& outgoing, const DefectContext& context);
bool NoReq(Outgoing& outgoing, const DefectContext& context);
bool NoMsg(Outgoing& outgoing, const DefectContext& context);
bool MalformedXml(Outgoing& outgoing, const DefectContext& context);
bool MalformedDescription(Outgoing& outgoing, const DefectContext& context);
bool DescriptionWithoutReid(Outgoing& outgoing, const DefectContext& context);
bool DescriptionOtherReid(Outgoing& outgoing, const DefectContext& context);
bool DescriptionWithoutVideo(Outgoing& outgoing, const DefectContext& context);
bool DescriptionWithoutName(Outgoing& outgoing, const DefectContext& context);
bool DescriptionWithoutEvent(Outgoing& outgoing, const DefectContext& context);
bool EmptyDescription(Outgoing& outgoing, const DefectContext& context);
bool NoDescription(Outgoing& outgoing, const DefectContext& context);
bool EmptyList(Outgoing& outgoing, const DefectContext& context);
bool DoubleList(Outgoing& outgoing, const DefectContext& context);
bool EventWithoutText(Outgoing& outgoing, const DefectContext& context);
bool BadPrefix(Outgoing& outgoing, const DefectContext& context);
bool NegativePrefix(Outgoing& outgoing, const DefectContext& context);
bool EmptyFrame(Outgoing& outgoing, const DefectContext& context);
bool LongPrefix(Outgoing& outgoing, const DefectContext& context);
bool ShortPrefix(Outgoing& outgoing, const DefectContext& context);
bool Garble(Outgoing& outgoing, const DefectContext& context);
bool Close(Outgoing& outgoing, const DefectContext& context);
bool Reset(Outgoing& outgoing, const DefectContext& context);
bool SecondConnection(Outgoing& outgoing, const DefectContext& context);
bool Reconnect(Outgoing& outgoing, const DefectContext& context);

}  // namespace rig::dvr
