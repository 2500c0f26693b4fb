// An engine that links nothing: it answers what it was told, or ends.

#include "platform/engine/program/EngineProgram.h"

#include <csignal>

namespace {

class EchoProgram final : public kelvo::EngineProgram {
public:
    kelvo::Value answerTo(const kelvo::Value& message, kelvo::EngineChannel&) override {
        if (message.isNumber())
            std::raise(message.numberIfAny()->intValue());
        return message.isData() ? kelvo::Value() : message;
    }
};

} // namespace

int main(int argumentCount, char** arguments) {
    EchoProgram program;
    return kelvo::runEngine(program, argumentCount, arguments);
}
