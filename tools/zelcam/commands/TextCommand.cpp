// zelcam text: sends a text command and prints the reply.
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/TextTools.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

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
        zel::Sdk sdk;
        const zel::Camera camera = sdk.open(m_Camera);
        const std::string reply = Reply(camera, text);
        result = Json{{"command", text}, {"reply", reply}};
        if (reply.starts_with("ERR")) {
            throw Failure(camera.label() + " refused '" + text + "'", reply, "docs/zelcam.md lists text commands",
                          kRefused);
        }
        if (!m_Json) Print("{}\n", reply);
    }

  private:
    static std::string Reply(const zel::Camera& camera, const std::string& text) {
        try {
            return Trim(camera.command(text));
        } catch (const zel::Error& error) {
            throw Failure(camera.label() + " gave no reply to '" + text + "'", "nothing complete came within 5 s",
                          "check cable and power", KindOf(error.kind()));
        }
    }

    std::vector<std::string> m_Words;
};

}  // namespace

std::unique_ptr<Command> MakeTextCommand() { return std::make_unique<TextCommand>(); }

}  // namespace zelcam
