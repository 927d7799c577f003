// Links between nodes and file parameters: resolution, output lists, forwarding forms,
// content-relative paths, and what copies may and may not do to the network.

#include "nodes/trFile.h"

#include "nodes/trBase.h"
#include "nodes/trClassPool.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// A node with an untyped link (named input_node, so children can forward to it), a
// shader link and a file.
class LinkNode : public trBase {
public:
    trNodeLink input;
    trShaderLink shader;
    trFile texture;
    long inputIndex = -1;
    long shaderIndex = -1;
    long textureIndex = -1;

    LinkNode()
    {
        inputIndex = Param(input, "input_node", trString());
        shaderIndex = Param(shader, "shader", trString());
        textureIndex = Param(texture, "texture", trString());
    }
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
    trNodeLink input;
    trNodeLink follow;
    long inputIndex = -1;
    long followIndex = -1;

    ForwardNode()
    {
        inputIndex = Param(input, "input_node", trString());
        followIndex = Param(follow, "follow", trString());
    }
};

// A shader-typed link that may forward to an untyped input_node.
class ShaderForwardNode : public trBase {
public:
    trShaderLink follow;
    long followIndex = -1;

    ShaderForwardNode() { followIndex = Param(follow, "follow", trString()); }
};

template <class T>
trBase *CreateNode()
{
    return new T;
}

void DestroyNode(trBase *node) { delete node; }

class LinkTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        static bool registered = false;
        if (registered)
            return;
        registered = true;
        trClasses.AddClass("test/", "linktest_link_node", &CreateNode<LinkNode>, &DestroyNode, "");
        trClasses.AddClass("test/", "linktest_shader_node", &CreateNode<ShaderNode>, &DestroyNode, "");
        trClasses.AddClass("test/", "linktest_camera_node", &CreateNode<CameraNode>, &DestroyNode, "");
        trClasses.AddClass("test/", "linktest_forward_node", &CreateNode<ForwardNode>, &DestroyNode, "");
        trClasses.AddClass("test/", "linktest_shader_forward_node", &CreateNode<ShaderForwardNode>, &DestroyNode,
                           "");
    }

    void SetUp() override { root = trCreateObject("linktest_link_node", nullptr, 0); }

    void TearDown() override
    {
        if (root)
            trDestroyObject(root);
    }

    template <class T>
    T *Make(char const *className, trBase *parent, char const *nodeName)
    {
        trBase *node = trCreateObject(className, parent, 1);
        EXPECT_NE(node, nullptr);
        node->SetName(nodeName);
        return static_cast<T *>(node);
    }

    LinkNode *MakeLink(trBase *parent, char const *nodeName)
    {
        return Make<LinkNode>("linktest_link_node", parent, nodeName);
    }

    trBase *root = nullptr;
};

} // namespace

TEST(trFileValue, ResetKeepsTheKindOfLink)
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
    EXPECT_TRUE(link.FileStringR() == "x");
    EXPECT_EQ(link.OpenMode(), trFileModeNodeLink);
    link.Reset("y");
    EXPECT_TRUE(link.FileStringR() == "y");
}

TEST(trFileValue, OwnerlessCopyTakesEverythingButTheOwner)
{
    trShaderLink link;
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
    LinkNode *user = MakeLink(root, "S");
    trBase *camera = Make<trBase>("linktest_camera_node", root, "Cam");
    ShaderNode *shader = Make<ShaderNode>("linktest_shader_node", root, "Sh");
    trNodeLink plain; // a plain link given whole can't lift the check
    plain.SetLinkString("Cam");
    for (int form = 0; form < 2; ++form) {
        testing::internal::CaptureStdout();
        if (form == 0)
            user->SetParam(user->shaderIndex, "Cam", trWhoUser);
        else
            user->SetParam(user->shaderIndex, plain, trWhoUser);
        std::string const out = testing::internal::GetCapturedStdout();
        EXPECT_NE(out.find("Warning: Wrong type of node in S link to Cam"), std::string::npos) << out;
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
    testing::internal::CaptureStdout();
    user->input.SetNodeType(trNodeTypeShader);
    std::string const out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("Wrong type of node in S link to Cam"), std::string::npos) << out;
    EXPECT_EQ(user->input.LinkedNode(true), nullptr);
    EXPECT_EQ(camera->NumOutputs(), 0);
    user->input.SetNodeType(trNodeTypeCamera);
    EXPECT_EQ(user->input.LinkedNode(true), camera);
    EXPECT_EQ(camera->NumOutputs(), 1);
}

TEST_F(LinkTest, RelinkingDetachesFromTheOldTarget)
{
    LinkNode *a = MakeLink(root, "A");
    LinkNode *b = MakeLink(root, "B");
    LinkNode *c = MakeLink(root, "C");
    LinkNode *d = MakeLink(root, "D");
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
}

TEST_F(LinkTest, CopiesNeverTouchTheOutputList)
{
    LinkNode *a = MakeLink(root, "A");
    LinkNode *b = MakeLink(root, "B");
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

TEST_F(LinkTest, DestroyingTheOwnerLeavesTheTargetsList)
{
    LinkNode *a = MakeLink(root, "A");
    LinkNode *b = MakeLink(root, "B");
    a->SetParam(a->inputIndex, "B", trWhoUser);
    ASSERT_EQ(b->NumOutputs(), 1);
    EXPECT_EQ(root->DestroyChild("A"), 1);
    EXPECT_EQ(b->NumOutputs(), 0);

    // A node deleted without PreDestroy still leaves the target's list, through the
    // link's own destructor.
    auto *loose = new LinkNode;
    loose->Init(root, 0);
    loose->SetParam(loose->inputIndex, "B", trWhoUser);
    ASSERT_EQ(b->NumOutputs(), 1);
    delete loose;
    EXPECT_EQ(b->NumOutputs(), 0);
}

TEST_F(LinkTest, ChildIsInternalSiblingIsExternal)
{
    LinkNode *p = MakeLink(root, "P");
    MakeLink(p, "K");
    MakeLink(root, "S");
    p->SetParam(p->inputIndex, "K", trWhoUser);
    EXPECT_TRUE(p->input.IsInternal() && !p->input.IsExternal());
    p->SetParam(p->inputIndex, "S", trWhoUser);
    EXPECT_TRUE(p->input.IsExternal() && !p->input.IsInternal());

    p->input.SetIsHidden();
    p->SetParam(p->inputIndex, "K", trWhoUser);
    EXPECT_TRUE(p->input.IsHidden());
}

TEST_F(LinkTest, ParentInputFollowsTheParentsLink)
{
    LinkNode *p = MakeLink(root, "P");
    auto *child = Make<ForwardNode>("linktest_forward_node", p, "F");
    trBase *x = MakeLink(root, "X");
    trBase *y = MakeLink(root, "Y");
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
    trBase *cam = Make<trBase>("linktest_camera_node", root, "Cam");
    auto *underCam = Make<ForwardNode>("linktest_forward_node", cam, "H");
    underCam->SetParam(underCam->followIndex, "{parent.input_node}", trWhoUser);
    EXPECT_EQ(underCam->follow.ForwardLink(), nullptr);
    EXPECT_EQ(underCam->follow.LinkedNode(true), nullptr);
}

TEST_F(LinkTest, OwnInputForwardingIsInternal)
{
    auto *f = Make<ForwardNode>("linktest_forward_node", root, "F");
    trBase *x = MakeLink(root, "X");
    f->SetParam(f->inputIndex, "X", trWhoUser);
    f->SetParam(f->followIndex, "{input_node}", trWhoUser);
    EXPECT_TRUE(f->follow.IsInternal());
    EXPECT_EQ(f->follow.LinkedNode(true), x);

    // input_node can't follow itself.
    f->SetParam(f->inputIndex, "{input_node}", trWhoUser);
    EXPECT_EQ(f->input.ForwardLink(), nullptr);
    EXPECT_EQ(f->follow.LinkedNode(true), nullptr);
}

TEST_F(LinkTest, ForwardingToALinkOfAnotherTypeIsRefused)
{
    LinkNode *p = MakeLink(root, "P");
    auto *child = Make<ShaderForwardNode>("linktest_shader_forward_node", p, "F");
    MakeLink(root, "X");
    p->SetParam(p->inputIndex, "X", trWhoUser);

    testing::internal::CaptureStdout();
    child->SetParam(child->followIndex, "{parent.input_node}", trWhoUser);
    std::string const out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("Wrong type of node in F link to {parent.input_node}"), std::string::npos) << out;
    EXPECT_EQ(child->follow.ForwardLink(), nullptr);
    EXPECT_EQ(child->follow.LinkedNode(true), nullptr);
}

TEST_F(LinkTest, DestroyingTheParentOfAForwardingChildIsSafe)
{
    LinkNode *p = MakeLink(root, "P");
    auto *child = Make<ForwardNode>("linktest_forward_node", p, "F");
    trBase *x = MakeLink(root, "X");
    p->SetParam(p->inputIndex, "X", trWhoUser);
    child->SetParam(child->followIndex, "{parent.input_node}", trWhoUser);
    ASSERT_EQ(child->follow.LinkedNode(true), x);
    // The parent's link object dies before its children are destroyed.
    EXPECT_EQ(root->DestroyChild("P"), 1);
    EXPECT_EQ(x->NumOutputs(), 0);
}

TEST_F(LinkTest, ContentFolderPrefixIsStrippedFromFilesOnly)
{
    root->SetAbsoluteContentFilePathForChildren("/proj/");
    LinkNode *a = MakeLink(root, "A");

    a->SetParam(a->textureIndex, "/proj/tex/rock.png", trWhoUser);
    EXPECT_TRUE(a->texture.FileStringR() == "tex/rock.png");
    EXPECT_TRUE(a->texture.FullPath() == "/proj/tex/rock.png");

    a->SetParam(a->textureIndex, "/elsewhere/rock.png", trWhoUser);
    EXPECT_TRUE(a->texture.FileStringR() == "/elsewhere/rock.png");
    EXPECT_TRUE(a->texture.FullPath() == "/elsewhere/rock.png");

    // Absolute forms are left alone; relative ones are made absolute.
    a->texture.SetFileString("C:/data/x.png");
    EXPECT_TRUE(a->texture.FullPath() == "C:/data/x.png");
    a->texture.SetFileString("rel/x.png");
    EXPECT_TRUE(a->texture.FullPath() == "/proj/rel/x.png");
    a->texture.SetFileString("");
    EXPECT_EQ(a->texture.FullPath().length, 0);

    // A link's text is a node path, never shortened or extended.
    a->input.SetLinkString("/proj/B");
    EXPECT_TRUE(a->input.FileStringR() == "/proj/B");
    EXPECT_TRUE(a->input.FullPath() == "/proj/B");
}

TEST_F(LinkTest, AcceptChangeRemembersTheTarget)
{
    trNodeLink fresh;
    fresh.AcceptChange();
    EXPECT_TRUE(fresh.IsLinkedNodeEqualToAccepted());
    EXPECT_FALSE(fresh.HasChanged());

    LinkNode *a = MakeLink(root, "A");
    MakeLink(root, "B");
    MakeLink(root, "C");
    a->SetParam(a->inputIndex, "B", trWhoUser);
    EXPECT_TRUE(a->input.HasChanged());
    EXPECT_FALSE(a->input.IsLinkedNodeEqualToAccepted());
    a->input.AcceptChange();
    EXPECT_FALSE(a->input.HasChanged());
    EXPECT_TRUE(a->input.IsLinkedNodeEqualToAccepted());

    a->SetParam(a->inputIndex, "C", trWhoUser);
    EXPECT_TRUE(a->input.HasChanged());
    EXPECT_FALSE(a->input.IsLinkedNodeEqualToAccepted());
    // Back to the accepted target: the text changed twice, the target didn't.
    a->SetParam(a->inputIndex, "B", trWhoUser);
    EXPECT_TRUE(a->input.HasChanged());
    EXPECT_TRUE(a->input.IsLinkedNodeEqualToAccepted());
}
