#pragma once

#include "tests/harness/model/Model.h"

namespace model {

/// Descriptions are sent as the text of an element. The model reads no XML: whoever makes a message leaves
/// each description's tree here.
const Element* Description(const std::string& text);
/// @return the text that stands for the description
std::string Registered(const Element& description);

class Model_1_0 : public Model {
 public:
    using Model::Model;

 protected:
    void Handle(const std::string& req, const Element& message) override;

 private:
    void TakeXml(const Element& message);
    void TakeFileComplete(const Element& message);
    void RequestFile();
};

class Model_2_0 : public Model {
 public:
    using Model::Model;

 protected:
    void Handle(const std::string& req, const Element& message) override;

 private:
    void SendInDialect(const std::string& req, std::vector<std::pair<std::string, std::string>> attributes);
    void TakeOk();
    void TakeEventList(const Element& message);
    void TakeEvent(const Element& message);
    void TakeDescription(const Element& message, const std::string& reid);
    void TakeFileComplete(const Element& message);
    void CompareHash(const Element& message);
    void TakeAcknowledgement(const Element& message);
    void TakeInvalidEvent(const Element& message);
    void TakeTransportException(const Element& message);
    void TakeXferInProgress(const Element& message);
    void RequestNextEvent();
    void RequestFile(bool rehash);
    void GoOn();
    void RequestLastFile();
    void RequestDamagedFile();

    unsigned int refusedFiles_ = 0;
    bool isRehashDue_ = false;
};

}  // namespace model
