import { useLayoutEffect, useRef } from "preact/hooks";
import type { Project, Segment } from "../../bridge/routes";
import { categories } from "../../model/categories";
import { activity } from "../../model/timeline";
import { clock, count, duration, plainDomain } from "../../model/time";
import { CategoryName } from "../../ui/icons";
import { Foreign, ProjectName } from "../../ui/parts";

interface Props {
  segment: Segment;
  projects: readonly Project[];
  /** Where it points to, in pixels of the plot that is `width` wide. */
  x: number;
  width: number;
  /** The segments that are drawn together with this one, when they are too thin to be told apart. */
  near: readonly Segment[];
}

const size = 230;

// Under the timeline, or over the plot where the bar for what is picked, or the window, ends before that.
function usePlace(what: unknown) {
  const box = useRef<HTMLDivElement>(null);
  useLayoutEffect(() => {
    const own = box.current;
    if (!own) return;
    own.classList.remove("above");
    const limit = document.querySelector(".assign")?.getBoundingClientRect().top ?? innerHeight;
    own.classList.toggle("above", own.getBoundingClientRect().bottom > limit);
  }, [what]);
  return box;
}

/** What is known of a stretch of the timeline, under it. */
export function SegmentTip({ segment, projects, x, width, near }: Props) {
  const project = projects.find(({ id }) => id === segment.pid);
  const left = Math.min(Math.max(x - size / 2, 0), Math.max(width - size, 0));
  const together = near.length > 1;
  const first = together ? near[0] : segment;
  const last = together ? near[near.length - 1] : segment;
  const total = near.reduce((sum, { start, end }) => sum + end - start, 0);
  const box = usePlace(segment);
  const kinds = together ? activity(near, -Infinity, Infinity) : {};
  return (
    <div class="tip" ref={box} style={{ left: `${left}px`, width: `${size}px` }} aria-hidden="true">
      <p>
        <b>
          {clock(first?.start ?? segment.start)} – {clock(last?.end ?? segment.end)}
        </b>
        <span>{duration(together ? total : segment.end - segment.start)}</span>
      </p>
      {together ? (
        <>
          <p class="quiet">{count(near.length, "passage bref", "passages brefs")}</p>
          {categories.map(
            (cat) =>
              kinds[cat] !== undefined && (
                <p key={cat}>
                  <CategoryName cat={cat} />
                  <span>{duration(kinds[cat])}</span>
                </p>
              ),
          )}
        </>
      ) : (
        <>
          <p>
            <CategoryName cat={segment.cat} />
            {project && <ProjectName project={project} />}
          </p>
          <p class="quiet">
            <Foreign text={segment.top.map(plainDomain).join(", ")} length={120} />
          </p>
        </>
      )}
    </div>
  );
}
