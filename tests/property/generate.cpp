// generate.cpp: how often what is generated. Valid calls are the rule, everything else is frequent.
#include "generate.h"

#include <cstring>

#include "functions.h"

static int below(int limit) { return *rc::gen::inRange(0, limit); }
static int any_pick() { return below(1000); }
static bool one_in(int chances) { return below(chances) == chances - 1; } // shrinks to false

static rc::Gen<Brick> arbitrary_brick() {
    return rc::gen::exec([] {
        Brick brick;
        brick.kind = *rc::gen::weightedElement<int>({
            {3,  Brick::layer          },
            {10, Brick::control        },
            {8,  Brick::group          },
            {3,  Brick::screen         },
            {7,  Brick::instance       },
            {6,  Brick::table          },
            {2,  Brick::null_entry     },
            {4,  Brick::listed_again   },
            {2,  Brick::instance_again },
            {3,  Brick::template_cell  },
            {1,  Brick::absent_layer   },
            {1,  Brick::lost_control   },
            {1,  Brick::invalid_type   },
            {2,  Brick::odd_cell       },
            {1,  Brick::misleading_name},
            {20, Brick::variable       },
            {3,  Brick::cell_variable  },
        });
        brick.owner = any_pick();
        brick.pick = any_pick();
        brick.name = any_pick();
        int most = one_in(20) ? 6 : 3;
        brick.rows = below(most);
        brick.cols = below(most);
        return brick;
    });
}

// Of the kind that a letter in a function's list of arguments stands for.
static Argument fitting_argument(char letter) {
    Argument argument;
    argument.pick = any_pick();
    switch (letter) {
    case 'n':
        argument.kind = one_in(6) ? Argument::text : Argument::name;
        break;
    case 'e':
        argument.kind = one_in(4) ? Argument::name : Argument::handle;
        break;
    case 'k':
        argument.kind = one_in(6) ? Argument::text : Argument::variable;
        break;
    case 'v':
        argument.kind = *rc::gen::element<int>(Argument::number, Argument::boolean, Argument::text);
        break;
    case 'i':
        argument.kind = one_in(8) ? Argument::text : Argument::number;
        break;
    case 'a':
        argument.kind = *rc::gen::weightedElement<int>({
            {12, Argument::number },
            {2,  Argument::nil    },
            {1,  Argument::text   },
            {1,  Argument::boolean}
        });
        if (!one_in(4)) argument.pick = 1 + below(3); // the numbers 1, 2 and 3
        break;
    case 't':
        argument.kind = Argument::table;
        break;
    default:
        break;
    }
    return argument;
}

static Argument any_argument() {
    Argument argument;
    argument.kind = below(Argument::kind_count);
    argument.pick = any_pick();
    return argument;
}

// Behind the last argument the list begins again, without self.
static char letter_at(const Function &function, int index) {
    int wanted = static_cast<int>(std::strlen(function.arguments));
    if (index < wanted) return function.arguments[index];
    return wanted > 1 ? function.arguments[1 + (index - 1) % (wanted - 1)] : 'v';
}

static int arbitrary_count(const Function &function) {
    int wanted = static_cast<int>(std::strlen(function.arguments));
    if (one_in(60)) return below(80); // more than Lua's stack has room for by itself
    return one_in(8) ? below(wanted + 3) : wanted - below(function.optional + 1);
}

static std::vector<Argument> arbitrary_arguments(const Function &function) {
    int count = arbitrary_count(function);
    std::vector<Argument> arguments;
    for (int i = 0; i < count; ++i)
        arguments.push_back(one_in(i < 8 ? 12 : 60) ? any_argument() : fitting_argument(letter_at(function, i)));
    return arguments;
}

static void choose_circumstances(Step &step) {
    step.place = below(3);
    if (one_in(16)) step.missing = 1 + below(2);
    if (one_in(6)) {
        step.fault =
            *rc::gen::element<int>(static_cast<int>(Fault::duplicate_text), static_cast<int>(Fault::resize_text),
                                   static_cast<int>(Fault::make_list), static_cast<int>(Fault::find_object),
                                   static_cast<int>(Fault::read_variable), static_cast<int>(Fault::write_variable),
                                   static_cast<int>(Fault::find_keys));
        step.nth = 1 + below(4);
    }
    step.clone = one_in(3) ? 0 : 1 + any_pick();
}

static rc::Gen<Step> arbitrary_step(unsigned subjects) {
    std::vector<int> functions;
    for (std::size_t i = 0; i < all_functions().size(); ++i)
        if (all_functions()[i].subjects & subjects) functions.push_back(static_cast<int>(i));
    return rc::gen::exec([functions] {
        Step step;
        step.event = *rc::gen::weightedElement<int>({
            {40, Step::call        },
            {1,  Step::collect     },
            {2,  Step::host_removes},
            {1,  Step::host_renames},
            {2,  Step::host_writes },
            {1,  Step::host_forgets},
            {1,  Step::host_resizes},
        });
        if (step.event != Step::call) {
            step.arguments = {
                Argument{Argument::number, any_pick()},
                Argument{Argument::number, any_pick()}
            };
            return step;
        }
        step.function = *rc::gen::elementOf(functions);
        step.arguments = arbitrary_arguments(all_functions()[static_cast<std::size_t>(step.function)]);
        choose_circumstances(step);
        return step;
    });
}

// What is in a container is of full size, however small the container.
template <typename T> static rc::Gen<std::vector<T>> several(int most, rc::Gen<T> gen) {
    return rc::gen::resize(most, rc::gen::container<std::vector<T>>(rc::gen::resize(100, std::move(gen))));
}

rc::Gen<RandomCase> arbitrary_case(unsigned subjects) {
    return rc::gen::build<RandomCase>(
        rc::gen::set(&RandomCase::errors_return, rc::gen::resize(100, rc::gen::arbitrary<bool>())),
        rc::gen::set(&RandomCase::bricks, several(60, arbitrary_brick())),
        rc::gen::set(&RandomCase::steps, several(30, arbitrary_step(subjects))));
}
