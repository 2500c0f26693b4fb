#include "platform/engine/program/EngineProgram.h"
#include "platform/webkit/mime/MIMEMessage.h"

namespace kelvo {
namespace {

class MIMEProgram final : public EngineProgram {
public:
    void load() override { loadMIMELibrary(); }

    Value answerTo(const Value& message, EngineChannel& channel) override {
        const NSData data = message.data();
        Value fields = fieldsOfMIMEMessage(data.characters());
        if (fields.isNil() && isTooLargeMIMEMessage(data.characters()))
            channel.note(Outcome::broken, u"the message has more parts or header fields than are read");
        return fields;
    }
};

} // namespace
} // namespace kelvo

int main(int argumentCount, char** arguments) {
    kelvo::MIMEProgram program;
    return kelvo::runEngine(program, argumentCount, arguments);
}
