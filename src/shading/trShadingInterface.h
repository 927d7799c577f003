#pragma once
// The whole view of the renderer that a shader has: while shading
// (trShadingInterface) and at render start (trRenderingInterface). Each is one
// pointer back to the render state that owns it, so they copy with the state and
// are re-linked to each copy. The operations are added by the shader framework.

class trRenderState;

class trShadingInterface {
public:
    // Does nothing; called when the library loads so that this layout stays pinned.
    static void ABIStaticInit();

    void LinkToRenderState(trRenderState *state) { renderState = state; }
    trRenderState &RenderState() const { return *renderState; }

private:
    trRenderState *renderState = nullptr;
};

class trRenderingInterface {
public:
    void LinkToRenderState(trRenderState *state) { renderState = state; }
    trRenderState &RenderState() const { return *renderState; }

private:
    trRenderState *renderState = nullptr;
};
