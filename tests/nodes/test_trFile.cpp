// Links between nodes and file parameters: resolution, output lists, forwarding forms,
// content-relative paths, and what copies may and may not do to the network.

#include "test_trBaseSupport.h"

#include <tuple>
#include <utility>

namespace {

// A node with an untyped link (named input_node, so children can forward to it), a
// shader link and a file.
class LinkNode : public trBase {
public:
    trNodeLink input;
    trShaderLink shader;
    trFile texture;
    long inputIndex = Param(input, "input_node", trString()), shaderIndex = Param(shader, "shader", trString()),
         textureIndex = Param(texture, "texture", trString());
};

class ShaderNode : public LinkNode {
public:
    ShaderNode() { DeclareTrue("is_shader"); }
};

class CameraNode : public trBase {
public:
    CameraNode() { DeclareTrue("is_camera"); }
};

// Has its own input_node and a second link used for the forwarding forms.
class ForwardNode : public trBase {
public:
    trNodeLink input, follow;
    long inputIndex = Param(input, "input_node", trString()), followIndex = Param(follow, "follow", trString());
};

// A shader-typed link that may forward to an untyped input_node.
class ShaderForwardNode : public trBase {
public:
    trShaderLink follow;
    long followIndex = Param(follow, "follow", trString());
};

class LinkTest : public testing::Test {
protected:
    void SetUp() override
    {
        TestClass<LinkNode>("linktest_link_node");
        TestClass<ShaderNode>("linktest_shader_node");
        TestClass<CameraNode>("linktest_camera_node");
        TestClass<ForwardNode>("linktest_forward_node");
        TestClass<ShaderForwardNode>("linktest_shader_forward_node");
        root = trCreateObject("linktest_link_node", nullptr, 0);
    }
    void TearDown() override { trDestroyObject(root); }
    template <class T = LinkNode>
    T *Make(trBase *parent, char const *nodeName, char const *className = "linktest_link_node")
    {
        trBase *node = trCreateObject(className, parent, 1);
        EXPECT_NE(node, nullptr);
        node->SetName(nodeName);
        return static_cast<T *>(node);
    }
    trBase *Camera(trBase *parent, char const *nodeName) { return Make<trBase>(parent, nodeName, "linktest_camera_node"); }
    ForwardNode *Forward(trBase *parent, char const *nodeName)
    {
        return Make<ForwardNode>(parent, nodeName, "linktest_forward_node");
    }
    trBase *root = nullptr;
};

TEST(trFileValue, ResetAndCopiesKeepTheKindOfLink)
{
    trShaderLink link;
    link.SetLinkString("Some shader");
    link.SetIsHidden();
    link.SetIsDirectlyEditable(0);
    link.SetHasChanged(false);
    link.Reset();
    EXPECT_TRUE(link.FileStringR().length == 0 && link.OpenMode() == trFileModeNodeLink);
    EXPECT_EQ(link.NodeType(), trNodeTypeShader);
    EXPECT_TRUE(link.IsExternal() && link.IsDirectlyEditable() == 1 && link.HasChanged() && !link.IsCached());
    // Even an explicit file mode leaves a link a link.
    link.Reset("x", trFileModeWrite);
    EXPECT_TRUE(link.FileStringR() == "x" && link.OpenMode() == trFileModeNodeLink);
    link.Reset("y");
    EXPECT_TRUE(link.FileStringR() == "y");
    // An ownerless copy takes everything but the owner.
    link.SetLinkString("Target");
    link.SetIsInternal(true);
    trFile copy(link);
    EXPECT_TRUE(copy.FileStringR() == "Target" && copy.IsNodeLink() && copy.IsInternal());
    EXPECT_TRUE(copy.NodeType() == trNodeTypeShader && copy.Owner() == nullptr);
    trFile assigned;
    assigned = link;
    EXPECT_TRUE(assigned.IsNodeLink() && assigned.NodeType() == trNodeTypeShader);
    // Assigning into a typed link keeps its type: a plain link can't lift the check.
    trNodeLink untyped;
    untyped.SetLinkString("Other");
    trShaderLink target;
    target = static_cast<trFile const &>(untyped);
    EXPECT_EQ(target.NodeType(), trNodeTypeShader);
    EXPECT_TRUE(target.FileStringR() == "Other");
    // A plain file assigned into a link leaves it a link.
    trFile file;
    file.SetFileString("rock.png");
    target = file;
    EXPECT_TRUE(target.IsNodeLink());
}

TEST_F(LinkTest, TypedLinksRefuseTheWrongKindOfNode)
{
    LinkNode *user = Make(root, "S");
    trBase *camera = Camera(root, "Cam");
    auto *shader = Make<ShaderNode>(root, "Sh", "linktest_shader_node");
    trNodeLink plain; // a plain link given whole can't lift the check
    plain.SetLinkString("Cam");
    for (int form = 0; form < 2; ++form) {
        Console console;
        if (form == 0)
            user->SetParam(user->shaderIndex, "Cam", trWhoUser);
        else
            user->SetParam(user->shaderIndex, plain, trWhoUser);
        EXPECT_TRUE(Has(console.Done(), "Warning: Wrong type of node in S link to Cam")) << console.all;
        EXPECT_EQ(user->shader.NodeType(), trNodeTypeShader);
        EXPECT_EQ(user->shader.LinkedNode(true), nullptr);
        EXPECT_TRUE(user->shader.FileStringR() == "Cam");
        EXPECT_EQ(camera->NumOutputs(), 0);
    }
    user->SetParam(user->shaderIndex, "Sh", trWhoUser);
    EXPECT_EQ(user->shader.LinkedNode(true), shader);
    EXPECT_EQ(shader->NumOutputs(), 1);
    // An untyped link takes either, until its type changes: then the target is tested again.
    user->SetParam(user->inputIndex, "Cam", trWhoUser);
    EXPECT_EQ(user->input.LinkedNode(true), camera);
    Console console;
    user->input.SetNodeType(trNodeTypeShader);
    EXPECT_TRUE(Has(console.Done(), "Wrong type of node in S link to Cam")) << console.all;
    EXPECT_EQ(user->input.LinkedNode(true), nullptr);
    EXPECT_EQ(camera->NumOutputs(), 0);
    user->input.SetNodeType(trNodeTypeCamera);
    EXPECT_EQ(user->input.LinkedNode(true), camera);
    EXPECT_EQ(camera->NumOutputs(), 1);
}

TEST_F(LinkTest, OutputListsFollowRelinksResetsAndDestruction)
{
    LinkNode *a = Make(root, "A"), *b = Make(root, "B"), *c = Make(root, "C"), *d = Make(root, "D");
    a->SetParam(a->inputIndex, "B", trWhoUser);
    d->SetParam(d->inputIndex, "B", trWhoUser);
    a->SetParam(a->inputIndex, "C", trWhoUser);
    ASSERT_EQ(b->NumOutputs(), 1);
    EXPECT_EQ(b->OutputNode(0), d);
    EXPECT_EQ(c->NumOutputs(), 1);
    // Reset empties the stored link and leaves the target's list too.
    a->input.Reset();
    EXPECT_EQ(c->NumOutputs(), 0);
    EXPECT_EQ(a->input.Owner(), nullptr);
    EXPECT_TRUE(a->input.IsNodeLink());
    // Destroying the owner leaves the target's list.
    EXPECT_EQ(root->DestroyChild("D"), 1);
    EXPECT_EQ(b->NumOutputs(), 0);
    // A node deleted without PreDestroy still leaves it, through the link's own destructor.
    auto *loose = new LinkNode;
    loose->Init(root, 0);
    loose->SetParam(loose->inputIndex, "B", trWhoUser);
    ASSERT_EQ(b->NumOutputs(), 1);
    delete loose;
    EXPECT_EQ(b->NumOutputs(), 0);
}

TEST_F(LinkTest, CopiesNeverTouchTheOutputList)
{
    LinkNode *a = Make(root, "A"), *b = Make(root, "B");
    a->SetParam(a->inputIndex, "B", trWhoUser);
    ASSERT_EQ(b->NumOutputs(), 1);
    {
        trNodeLink copy(a->input);
        EXPECT_EQ(copy.LinkedNode(true), b);
    }
    EXPECT_EQ(b->NumOutputs(), 1);
    {
        // The same owner and index, as a write does before its cycle check: the copy
        // resolves but isn't the parameter, so it neither enters nor leaves the list.
        trNodeLink copy(a->input);
        copy.SetOwner(a, a->inputIndex);
        EXPECT_EQ(copy.LinkedNode(true), b);
        copy.SetLinkString("");
        EXPECT_EQ(copy.LinkedNode(true), nullptr);
        EXPECT_EQ(b->NumOutputs(), 1);
        copy.SetLinkString("B");
        EXPECT_EQ(b->NumOutputs(), 1);
    }
    ASSERT_EQ(b->NumOutputs(), 1);
    EXPECT_EQ(b->OutputNode(0), a);
    trFile read;
    EXPECT_TRUE(a->GetParam(a->inputIndex, read) && read.IsNodeLink() && read.LinkedNode(true) == b);
    EXPECT_EQ(b->NumOutputs(), 1);
}

TEST_F(LinkTest, ChildAndOwnInputAreInternalSiblingIsExternal)
{
    LinkNode *p = Make(root, "P");
    Make(p, "K");
    Make(root, "S");
    p->SetParam(p->inputIndex, "K", trWhoUser);
    EXPECT_TRUE(p->input.IsInternal() && !p->input.IsExternal());
    p->SetParam(p->inputIndex, "S", trWhoUser);
    EXPECT_TRUE(p->input.IsExternal() && !p->input.IsInternal());
    p->input.SetIsHidden();
    p->SetParam(p->inputIndex, "K", trWhoUser);
    EXPECT_TRUE(p->input.IsHidden());
    ForwardNode *f = Forward(root, "F");
    f->SetParam(f->inputIndex, "S", trWhoUser);
    f->SetParam(f->followIndex, "{input_node}", trWhoUser);
    EXPECT_TRUE(f->follow.IsInternal());
    EXPECT_EQ(f->follow.LinkedNode(true), root->Child(trString("S")));
    // input_node can't follow itself.
    f->SetParam(f->inputIndex, "{input_node}", trWhoUser);
    EXPECT_EQ(f->input.ForwardLink(), nullptr);
    EXPECT_EQ(f->follow.LinkedNode(true), nullptr);
}

TEST_F(LinkTest, ParentInputFollowsTheParentsLink)
{
    LinkNode *p = Make(root, "P");
    ForwardNode *child = Forward(p, "F");
    trBase *x = Make(root, "X"), *y = Make(root, "Y");
    p->SetParam(p->inputIndex, "X", trWhoUser);
    child->SetParam(child->followIndex, "{parent.input_node}", trWhoUser);
    EXPECT_EQ(child->follow.ForwardLink(), &p->input);
    EXPECT_EQ(child->follow.LinkedNode(true), x);
    EXPECT_EQ(child->follow.LinkedNode(false), nullptr);
    EXPECT_EQ(child->follow.LinkedNodeDirectOnly(), nullptr);
    // Only the parent's link is in X's list; forwarding enters nothing.
    EXPECT_EQ(x->NumOutputs(), 1);
    p->SetParam(p->inputIndex, "Y", trWhoUser);
    EXPECT_EQ(child->follow.LinkedNode(true), y);
    EXPECT_EQ(x->NumOutputs(), 0);
    // A parent without an input_node gives nothing to follow.
    ForwardNode *underCam = Forward(Camera(root, "Cam"), "H");
    underCam->SetParam(underCam->followIndex, "{parent.input_node}", trWhoUser);
    EXPECT_EQ(underCam->follow.ForwardLink(), nullptr);
    EXPECT_EQ(underCam->follow.LinkedNode(true), nullptr);
    // Nor does a link of another type.
    auto *shaderChild = Make<ShaderForwardNode>(p, "G", "linktest_shader_forward_node");
    Console console;
    shaderChild->SetParam(shaderChild->followIndex, "{parent.input_node}", trWhoUser);
    EXPECT_TRUE(Has(console.Done(), "Wrong type of node in G link to {parent.input_node}")) << console.all;
    EXPECT_EQ(shaderChild->follow.ForwardLink(), nullptr);
    EXPECT_EQ(shaderChild->follow.LinkedNode(true), nullptr);
    // The parent's link object dies before its children are destroyed: that is safe.
    EXPECT_EQ(root->DestroyChild("P"), 1);
    EXPECT_EQ(y->NumOutputs(), 0);
}

TEST_F(LinkTest, ContentFolderPrefixIsStrippedFromFilesOnly)
{
    root->SetAbsoluteContentFilePathForChildren("/proj/");
    LinkNode *a = Make(root, "A");
    // Set, stored, full path.
    for (auto [set, stored, full] : {std::tuple{"/proj/tex/rock.png", "tex/rock.png", "/proj/tex/rock.png"},
                                     {"/elsewhere/rock.png", "/elsewhere/rock.png", "/elsewhere/rock.png"}}) {
        a->SetParam(a->textureIndex, set, trWhoUser);
        EXPECT_EQ(Str(a->texture.FileStringR()) + " " + Str(a->texture.FullPath()), std::string(stored) + " " + full);
    }
    // Absolute forms are left alone; relative ones are made absolute.
    for (auto [set, full] : {std::pair{"C:/data/x.png", "C:/data/x.png"}, {"rel/x.png", "/proj/rel/x.png"}, {"", ""}}) {
        a->texture.SetFileString(set);
        EXPECT_EQ(Str(a->texture.FullPath()), full) << set;
    }
    // A link's text is a node path, never shortened or extended.
    a->input.SetLinkString("/proj/B");
    EXPECT_TRUE(a->input.FileStringR() == "/proj/B" && a->input.FullPath() == "/proj/B");
}

TEST_F(LinkTest, AcceptChangeRemembersTheTarget)
{
    trNodeLink fresh;
    fresh.AcceptChange();
    EXPECT_TRUE(fresh.IsLinkedNodeEqualToAccepted() && !fresh.HasChanged());
    LinkNode *a = Make(root, "A");
    Make(root, "B");
    Make(root, "C");
    // Each step writes a target (or, for "", accepts the present one); then: changed, and
    // resolving to the accepted node.
    for (auto [target, changed, equal] : {std::tuple{"B", true, false}, {"", false, true}, {"C", true, false},
                                          {"B", true, true}}) { // the text changed twice, the target didn't
        if (*target)
            a->SetParam(a->inputIndex, target, trWhoUser);
        else
            a->input.AcceptChange();
        EXPECT_EQ(a->input.HasChanged(), changed) << target;
        EXPECT_EQ(a->input.IsLinkedNodeEqualToAccepted(), equal) << target;
    }
}

} // namespace
