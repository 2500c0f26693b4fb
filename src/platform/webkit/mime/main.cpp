#include "platform/engine/program/EngineProgram.h"
#include "platform/webkit/mime/MIMEMessage.h"

namespace kelvo {
namespace {

class MIMEProgram final : public EngineProgram {
public:
    void load() override { loadMIMELibrary(); }

    Value answerTo(const Value& message, EngineChannel& channel) override {
        Value fields = fieldsOfMIMEMessage(message.data().characters());
        if (fields.isNil())
            channel.note(Outcome::broken, u"the message has no page in it");
        return fields;
    }
};

} // namespace
} // namespace kelvo

int main(int argumentCount, char** arguments) {
    kelvo::MIMEProgram program;
    return kelvo::runEngine(program, argumentCount, arguments);
}
