#pragma once
// How messages leave the library: console lines, and the host's callbacks for the
// ones a user must see. Every message names its operation first ("ReadSGI: ...").

#include <cstdint>

class trString;
class trBase;

// A record handed to the host's message callbacks. The callback may fill `result`,
// which the caller then reads (for instance the button the user chose).
struct trErrorWarningData {
    long kind = 0;
    std::int64_t value = 0;
    std::int32_t result = 0;
};

// Clears value and result, unless the record's kind is negative.
void trInitErrorWarningData(trErrorWarningData *data);
void trResetErrorWarningData(trErrorWarningData *data);
void trCopyErrorWarningData(trErrorWarningData const *from, trErrorWarningData *to);

// Host callbacks; each may stay null.
using trMessageCallBack = void (*)(char const *, trErrorWarningData *);
extern trMessageCallBack trCallBackError;
extern trMessageCallBack trCallBackWarning;
extern trMessageCallBack trCallBackInfoMsg;
extern void (*trCallBackBeep)();
extern long (*trCallBackSetupErrorsWarningsContext)(trBase const *, trString const *);
extern void (*trCallBackClearErrorsWarningsContext)(long);
extern bool (*trCallBackLoadUserResource)(trString *);
extern void (*trCallBackRequest3DPreviewUpdate)();
extern bool (*trCallBackLibraryAddItem)(unsigned long const &, trString const &, long const &);

// While 0, trError, trWarning and trInfoMsg write to the console only.
extern int trDoDlgBoxes;

// Console only.
void trOutMsg(char const *text);
void trOutMsg(trString const &text);
void trOutWarning(char const *text);
void trOutWarning(trString const &text);
void trOutError(char const *text);
void trOutError(trString const &text);

// Console, then the host's callback.
void trInfoMsg(char const *text);
void trInfoMsg(trString const &text);
void trInfoMsg(char const *text, trErrorWarningData *data);
void trInfoMsg(trString const &text, trErrorWarningData *data);
void trWarning(char const *text);
void trWarning(trString const &text);
void trWarning(char const *text, trErrorWarningData *data);
void trWarning(trString const &text, trErrorWarningData *data);
void trError(char const *text);
void trError(trString const &text);
void trError(char const *text, trErrorWarningData *data);
void trError(trString const &text, trErrorWarningData *data);

// Console lines for debug builds of a plug-in.
void trPrintMessage(char const *text);
void trPrintDebugMessage(char const *text);

void trBeep();
void trRequest3DPreviewUpdate();

// Message contexts attribute the messages raised in between to a node.
long trSetupErrorsWarningsContext(trBase const *node, trString const *label);
void trClearErrorsWarningsContext(long handle);

class trScopedErrorsWarningsContext {
public:
    trScopedErrorsWarningsContext(trBase *node, trString *label);
    ~trScopedErrorsWarningsContext();
    trScopedErrorsWarningsContext(trScopedErrorsWarningsContext const &) = delete;
    trScopedErrorsWarningsContext &operator=(trScopedErrorsWarningsContext const &) = delete;

private:
    long handle = 0;
    bool open = false;
};
