// VelmarBase: command line.
#include "MaterialFiles.h"
#include "ModelFile.h"

#include "host/glsl/Generator.h"
#include "host/tree/FixedMaterial.h"
#include "host/tree/NodeTypesText.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace vx::cli
{

namespace
{

using Json = nlohmann::ordered_json;

struct ShaderArguments
{
    std::string input, material;
    bool nodes = false, json = false;
};

// A line of a text that is otherwise shader source.
std::string Comment(const BString& text)
{
    std::string line = text.Std();
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    return "// " + line + "\n";
}

void Print(const BString& name, const GlslSource& source, const ShaderDecision& decision)
{
    std::string text = Comment("material " + name) +
                       Comment(BString(decision.needed ? "needs a shader: " : "needs no shader: ") + decision.why) +
                       Comment("hash " + source.Hash());
    for (const GlslSource::Texture& texture : source.textures)
        text += Comment(
            BString::Format("texture unit %d: %s %s ", texture.unit, texture.type.c_str(), texture.sampler.c_str()) +
            texture.file);
    if (!source.problem.IsEmpty())
        text += Comment("no source: " + source.problem);
    else
        text += Comment("--- vertex shader") + source.vertex + Comment("--- fragment shader") + source.fragment;
    std::fwrite(text.data(), 1, text.size(), stdout);
}

Json JsonOf(const BString& name, const BString& layer, const GlslSource& source, const ShaderDecision& decision)
{
    Json textures = Json::array(), uniforms = Json::array();
    for (const GlslSource::Texture& texture : source.textures)
        textures.push_back({{"sampler", texture.sampler},
                            {"type", texture.type},
                            {"unit", texture.unit},
                            {"file", texture.file.Std()}});
    for (const GlslSource::Uniform& uniform : source.uniforms)
        uniforms.push_back({{"name", uniform.name}, {"type", uniform.type}});
    Json facts = {{"material", name.Std()},      {"layer", layer.Std()},
                  {"hash", source.Hash().Std()}, {"needed", decision.needed},
                  {"why", decision.why.Std()},   {"textures", textures},
                  {"uniforms", uniforms},        {"usesTangents", source.usesTangents},
                  {"vertex", source.vertex},     {"fragment", source.fragment}};
    if (!source.problem.IsEmpty())
        facts["problem"] = source.problem.Std();
    return facts;
}

int RunShader(const ShaderArguments& arguments)
{
    if (arguments.nodes)
    {
        std::fputs(NodeTypesText().CString(), stdout);
        return FinishStandardOutput();
    }
    std::vector<NamedMaterial> materials;
    if (const int code = ReadMaterialsInput(arguments.input, materials); code != kDone)
        return code;
    Json list = Json::array();
    bool found = false, failed = false;
    std::vector<std::string> names;
    for (const NamedMaterial& material : materials)
    {
        names.push_back(material.name.Std());
        if (!arguments.material.empty() && material.name.Std() != arguments.material)
            continue;
        found = true;
        const ShaderDecision decision =
            DecideShader(*material.layers[0].tree, material.name, material.layers.size()); // the base layer's holds
        for (const NamedMaterial::Layer& layer : material.layers)
        {
            const GlslSource source = GenerateGlsl(*layer.tree);
            failed = failed || !source.problem.IsEmpty();
            const BString name =
                &layer == material.layers.data() ? material.name : material.name + ", layer " + layer.name;
            if (arguments.json)
                list.push_back(JsonOf(material.name, layer.name, source, decision));
            else
                Print(name, source, decision);
        }
    }
    if (!found)
        return Fail(kFailed, ShownName(arguments.input), 0,
                    BString(arguments.material.empty() ? "there are no materials in it"
                                                       : "there is no material '" + arguments.material + "' in it") +
                        (names.empty() ? BString() : BString(", expected " + Listed(names))));
    if (arguments.json)
        std::printf("%s\n", list.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
    const int code = FinishStandardOutput();
    return code == kDone && failed ? int(kFailed) : code;
}

} // namespace

void AddShaderVerb(CLI::App& app, int& exitCode)
{
    const auto arguments = std::make_shared<ShaderArguments>();
    CLI::App* const verb = AddVerb(app, "shader", "Print the shaders that the materials of a JSON file become");
    CLI::Option* const input =
        verb->add_option("INPUT", arguments->input, "Material file, plain or gzip; - is standard input")->type_name("");
    verb->add_option("--material", arguments->material, "Only the material of this name")->type_name("NAME");
    verb->add_flag("--json", arguments->json, "Print a list of JSON objects, one for each layer of each material");
    CLI::Option* const nodes = verb->add_flag("--nodes", arguments->nodes,
                                              "Print instead what nodes there are and what goes into them, as Markdown")
                                   ->excludes(input);
    verb->footer(
        "Sources are GLSL 1.30, vertex shader first. Whether a shader is needed, and why, is said before them.");
    verb->callback(
        [arguments, input, nodes, &exitCode]
        {
            exitCode = !*input && !*nodes ? Fail(kWrongUsage, "", 0, "INPUT is required, see 'velmar shader --help'")
                                          : RunShader(*arguments);
        });
}

} // namespace vx::cli
