// zelcam text: sends a text command and prints the reply.
#include "include/ZelCamera.h"
#include "tools/zelcam/camera/Session.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace {

void KeepReply(const char* reply, void* context) {
    try {
        *static_cast<std::string*>(context) = TextOrEmpty(reply);
    } catch (const std::bad_alloc&) {
        // The reply stays empty.
    }
}

class TextCommand : public Command {
  public:
    const char* Name() const override { return "text"; }
    const char* Help() const override { return "Send a text command to a camera and print the reply"; }
    const char* Example() const override { return "text info"; }

    void Declare(CLI::App& command) override {
        command.add_option("text", m_Words, "The command; words are joined by blanks")->required();
        DeclareCamera(command);
        DeclareJson(command);
    }

    void Run(Json& result) override {
        std::string text;
        for (const std::string& word : m_Words) text += (text.empty() ? "" : " ") + word;
        const Session session;
        const OpenCamera camera(session, m_Camera);
        std::string reply;
        camera->SetTextCommandCallback(&KeepReply, &reply);
        const bool answered = camera->SetTextCommand(text.c_str());
        camera->SetTextCommandCallback(nullptr, nullptr);
        if (!answered) {
            throw Failure(camera.Label() + " gave no reply to '" + text + "'", "nothing complete came within 5 s",
                          "check cable and power", kTimeout);
        }
        reply = Trim(reply);
        result = Json{{"command", text}, {"reply", reply}};
        if (reply.starts_with("ERR")) {
            throw Failure(camera.Label() + " refused '" + text + "'", reply, "docs/zelcam.md lists text commands",
                          kRefused);
        }
        if (!m_Json) Print("{}\n", reply);
    }

  private:
    std::vector<std::string> m_Words;
};

}  // namespace

std::unique_ptr<Command> MakeTextCommand() { return std::make_unique<TextCommand>(); }

}  // namespace zelcam
