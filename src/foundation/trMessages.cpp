#include "foundation/trMessages.h"

#include "foundation/trString.h"

#include <cstdio>
#include <cstring>
#include <string>

trMessageCallBack trCallBackError = nullptr;
trMessageCallBack trCallBackWarning = nullptr;
trMessageCallBack trCallBackInfoMsg = nullptr;
void (*trCallBackBeep)() = nullptr;
long (*trCallBackSetupErrorsWarningsContext)(trBase const *, trString const *) = nullptr;
void (*trCallBackClearErrorsWarningsContext)(long) = nullptr;
bool (*trCallBackLoadUserResource)(trString *) = nullptr;
void (*trCallBackRequest3DPreviewUpdate)() = nullptr;
bool (*trCallBackLibraryAddItem)(unsigned long const &, trString const &, long const &) = nullptr;

int trDoDlgBoxes = 1;

void trInitErrorWarningData(trErrorWarningData *data)
{
    if (data && data->kind >= 0) {
        data->value = 0;
        data->result = 0;
    }
}

void trResetErrorWarningData(trErrorWarningData *data)
{
    if (data)
        data->result = 0;
}

void trCopyErrorWarningData(trErrorWarningData const *from, trErrorWarningData *to)
{
    if (from && to)
        *to = *from;
}

namespace {

// One write per line, so that lines from render threads don't interleave mid-line.
void WriteLine(std::FILE *stream, char const *prefix, char const *text)
{
    std::string line;
    if (!text)
        text = "";
    line.reserve(std::strlen(prefix) + std::strlen(text) + 1);
    line += prefix;
    line += text;
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stream);
    std::fflush(stream);
}

// With no callback there is no box on this platform: the console line is all.
void ToHost(trMessageCallBack callBack, char const *text, trErrorWarningData *data)
{
    if (!trDoDlgBoxes)
        return;
    if (callBack) {
        callBack(text ? text : "", data);
        return;
    }
    if (data)
        data->result = 0;
}

} // namespace

void trOutMsg(char const *text) { WriteLine(stdout, "", text); }
void trOutMsg(trString const &text) { trOutMsg(text.chars); }
void trOutWarning(char const *text) { WriteLine(stdout, "Warning: ", text); }
void trOutWarning(trString const &text) { trOutWarning(text.chars); }
void trOutError(char const *text) { WriteLine(stderr, "ERROR: ", text); }
void trOutError(trString const &text) { trOutError(text.chars); }

void trInfoMsg(char const *text, trErrorWarningData *data)
{
    trOutMsg(text);
    ToHost(trCallBackInfoMsg, text, data);
}
void trInfoMsg(char const *text) { trInfoMsg(text, nullptr); }
void trInfoMsg(trString const &text) { trInfoMsg(text.chars, nullptr); }
void trInfoMsg(trString const &text, trErrorWarningData *data) { trInfoMsg(text.chars, data); }

void trWarning(char const *text, trErrorWarningData *data)
{
    trOutWarning(text);
    ToHost(trCallBackWarning, text, data);
}
void trWarning(char const *text) { trWarning(text, nullptr); }
void trWarning(trString const &text) { trWarning(text.chars, nullptr); }
void trWarning(trString const &text, trErrorWarningData *data) { trWarning(text.chars, data); }

void trError(char const *text, trErrorWarningData *data)
{
    trOutError(text);
    ToHost(trCallBackError, text, data);
}
void trError(char const *text) { trError(text, nullptr); }
void trError(trString const &text) { trError(text.chars, nullptr); }
void trError(trString const &text, trErrorWarningData *data) { trError(text.chars, data); }

void trPrintMessage(char const *text) { trOutMsg(text); }

void trPrintDebugMessage(char const *text)
{
#ifndef NDEBUG
    trOutMsg(text);
#else
    (void)text;
#endif
}

void trBeep()
{
    if (trCallBackBeep)
        trCallBackBeep();
}

void trRequest3DPreviewUpdate()
{
    if (trCallBackRequest3DPreviewUpdate)
        trCallBackRequest3DPreviewUpdate();
}

long trSetupErrorsWarningsContext(trBase const *node, trString const *label)
{
    return trCallBackSetupErrorsWarningsContext ? trCallBackSetupErrorsWarningsContext(node, label) : 0;
}

void trClearErrorsWarningsContext(long handle)
{
    if (trCallBackClearErrorsWarningsContext)
        trCallBackClearErrorsWarningsContext(handle);
}

trScopedErrorsWarningsContext::trScopedErrorsWarningsContext(trBase *node, trString *label)
{
    if (trCallBackSetupErrorsWarningsContext) {
        handle = trCallBackSetupErrorsWarningsContext(node, label);
        open = true;
    }
}

trScopedErrorsWarningsContext::~trScopedErrorsWarningsContext()
{
    // Closed through the callback that is set now: a host may have cleared it meanwhile.
    if (open && trCallBackClearErrorsWarningsContext)
        trCallBackClearErrorsWarningsContext(handle);
}
